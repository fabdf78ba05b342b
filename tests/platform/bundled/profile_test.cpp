// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Whole-file integer access to files that are missing or do not load, and with names that no file can contain.

#include "profile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "profileFixture.h"

namespace
{

class BundledProfile : public ProfileFixture
{
};

INSTANTIATE_TEST_SUITE_P(BothPairs, BundledProfile, BothPairs(),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace

TEST_P(BundledProfile, AWriteMakesTheFileButNotItsFolder)
{
    Set("S", "k", 2147483647);
    EXPECT_EQ(ReadBytes(path_), "[S]\nk=2147483647\n");
    Set("S", "k", -2147483647 - 1);
    EXPECT_EQ(ReadBytes(path_), "[S]\nk=-2147483648\n");

    ASSERT_EQ(unlink(path_.c_str()), 0);
    GetParam().set(folder_.Path("missing/x.ini").c_str(), "S", "k", 1);
    GetParam().set(/*path=*/nullptr, "S", "k", 1);
    GetParam().set("", "S", "k", 1);
    EXPECT_EQ(rmdir(folder_.Path().c_str()), 0) << "the folder is not empty";
}

TEST_P(BundledProfile, WhatCannotBeStoredLeavesTheFileAsItWas)
{
    WriteBytes(path_, "[S]\nk=1\n");
    const ino_t number = NumberOf(path_);
    Set("", "k", 2);
    Set("S]", "k", 2);
    Set("S", "", 2);
    Set("S", "a=b", 2);
    Set("S", "[k", 2);
    EXPECT_EQ(ReadBytes(path_), "[S]\nk=1\n");
    EXPECT_EQ(NumberOf(path_), number);

    ASSERT_EQ(unlink(path_.c_str()), 0);
    Set("S", "k\n", 2);
    EXPECT_EQ(rmdir(folder_.Path().c_str()), 0) << "no empty file is made";
}

TEST_P(BundledProfile, AFileThatDoesNotLoadReadsAsTheDefaultAndIsLeftAlone)
{
    ASSERT_EQ(mkdir(path_.c_str(), 0700), 0);
    EXPECT_EQ(Get("S", "k", 5), 5);
    Set("S", "k", 2);
    EXPECT_EQ(rmdir(path_.c_str()), 0) << "it is still an empty folder";
    EXPECT_EQ(rmdir(folder_.Path().c_str()), 0) << "no temporary file is left";
}

TEST_P(BundledProfile, AFileWithoutReadPermissionIsLeftAlone)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "root reads every file";
    WriteBytes(path_, "[S]\nk=1\n");
    ASSERT_EQ(chmod(path_.c_str(), 0200), 0);
    EXPECT_EQ(Get("S", "k", 5), 5);
    Set("S", "k", 2);
    ASSERT_EQ(chmod(path_.c_str(), 0600), 0);
    EXPECT_EQ(ReadBytes(path_), "[S]\nk=1\n");
}

TEST_P(BundledProfile, AReadWithoutAPathGivesTheDefault)
{
    EXPECT_EQ(GetParam().get(/*path=*/nullptr, "S", "k", 7), 7);
    EXPECT_EQ(GetParam().get("", "S", "k", 7), 7);
}
