// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The content of a file: the digests of FIPS 180-4, and files compared piece by piece.

#include "contentSum.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "scratchFolder.h"

TEST(ContentSum, IsLengthAndSha256)
{
    const ContentSum empty = SumOf("");
    EXPECT_EQ(empty.length, 0u);
    EXPECT_EQ(empty.sha256, "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    const ContentSum abc = SumOf("abc");
    EXPECT_EQ(abc.length, 3u);
    EXPECT_EQ(abc.sha256, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(ContentSum, OfAFileIsThatOfItsBytes)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("file");
    for (const std::size_t size : {0u, 1u, 4095u, 4096u, 4097u, 8192u, 100000u}) {
        std::string bytes(size, 'x');
        WriteBytes(path, bytes);
        ContentSum sum;
        ASSERT_TRUE(SumOfFile(path.c_str(), sum));
        EXPECT_EQ(sum.length, size);
        EXPECT_EQ(sum.sha256, SumOf(bytes).sha256) << size;
        EXPECT_TRUE(HoldsContent(path.c_str(), SumOf(bytes)));
        EXPECT_TRUE(HoldsBytes(path.c_str(), bytes));

        EXPECT_FALSE(HoldsContent(path.c_str(), SumOf(bytes + "x"))) << size;
        EXPECT_FALSE(HoldsBytes(path.c_str(), bytes + "x")) << size;
        if (size == 0)
            continue;
        EXPECT_FALSE(HoldsBytes(path.c_str(), bytes.substr(1))) << size;
        bytes.back() = 'y';
        EXPECT_FALSE(HoldsContent(path.c_str(), SumOf(bytes))) << size;
        EXPECT_FALSE(HoldsBytes(path.c_str(), bytes)) << size;
    }
}

TEST(ContentSum, IsOfRegularFilesAloneAndFollowsNoLink)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("file"), "");
    ASSERT_EQ(symlink("file", folder.Path("link").c_str()), 0);
    ASSERT_EQ(mkfifo(folder.Path("pipe").c_str(), 0600), 0);
    for (const char* name : {"missing", "link", "pipe", "", "file/below"}) {
        ContentSum sum;
        EXPECT_FALSE(SumOfFile(folder.Path(name).c_str(), sum)) << name;
        EXPECT_FALSE(HoldsBytes(folder.Path(name).c_str(), "")) << name;
        EXPECT_FALSE(HoldsContent(folder.Path(name).c_str(), SumOf(""))) << name;
    }
}
