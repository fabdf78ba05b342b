// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Section handles: changes wait for the flush, which applies them to the file's content at that time.

#include "registry.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "registryFixture.h"

using ETL_SubClass::registryGetString;

namespace
{

class Registry : public RegistryFixture
{
};

} // namespace

TEST_F(Registry, AMissingFileIsMadeByTheFirstFlush)
{
    _HREGISTRY_* handle = Open("Features");
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(registryGetInt(handle, "BLFLedMode", 7), 7);
    EXPECT_EQ(registryGetString(handle, "BLFLedMode", ""), "");
    registrySetString(handle, "BLFLedMode", "1");
    EXPECT_FALSE(IsThere());
    registryFlush(handle);
    EXPECT_EQ(ReadBytes(path_), "[Features]\nBLFLedMode=1\n");
}

TEST_F(Registry, AReadGivesTheValueOrTheDefault)
{
    WriteBytes(path_, "[a]\nn=5\n[b]\ntext=some text \nempty=\nwide=-99999999999\nword=on\n");
    _HREGISTRY_* handle = Open("b");
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(registryGetString(handle, "text", "default"), "some text ");
    EXPECT_EQ(registryGetString(handle, "empty", "default"), "");
    EXPECT_EQ(registryGetString(handle, "empty", ""), registryGetString(handle, "absent", ""));
    EXPECT_EQ(registryGetString(handle, "absent", "default"), "default");
    EXPECT_EQ(registryGetString(handle, "n", "default"), "default") << "a key of another section";
    EXPECT_EQ(registryGetInt(handle, "wide", 5), -2147483647 - 1);
    EXPECT_EQ(registryGetInt(handle, "word", 5), 0);
    EXPECT_EQ(registryGetInt(handle, "empty", 5), 0);
    EXPECT_EQ(registryGetInt(handle, "n", 6), 6);
    registryFlush(handle);
}

TEST_F(Registry, ALinkThatNamesNoFileYetIsAMissingFile)
{
    ASSERT_EQ(symlink("target.cfg", path_.c_str()), 0);
    _HREGISTRY_* handle = Open("S");
    ASSERT_NE(handle, nullptr);
    registrySetInt(handle, "k", 1);
    registryFlush(handle);
    EXPECT_EQ(ReadBytes(folder_.Path("target.cfg")), "[S]\nk=1\n");
}

TEST_F(Registry, NewKeysStandInTheOrderInWhichTheyWereSet)
{
    WriteBytes(path_, "; note\r\n[S]\r\nb = 1\r\n\r\n[T]\r\n");
    _HREGISTRY_* handle = Open("S");
    registrySetString(handle, "z", "");
    registrySetInt(handle, "b", 2147483647);
    registrySetInt(handle, "a", -2147483647 - 1);
    registrySetString(handle, "m", "x");
    registrySetString(handle, "z", "last");
    registryFlush(handle);
    EXPECT_EQ(ReadBytes(path_),
              "; note\r\n[S]\r\nb = 2147483647\r\nz = last\r\na = -2147483648\r\nm = x\r\n\r\n[T]\r\n");
}

TEST_F(Registry, AHandleThatIsNeverFlushedLeavesItsFileAsItWas)
{
    WriteBytes(path_, "[S]\nk=1\n");
    const FileTrace before = TraceOf(path_);
    _HREGISTRY_* handle = Open("S");
    registrySetInt(handle, "k", 2);
    registrySetString(handle, "new", "text");
    EXPECT_EQ(TraceOf(path_), before);
    // The handle is released at exit; the leak check of the sanitizer build verifies this.
}

TEST_F(Registry, AMissingFolderIsNotMade)
{
    const std::string path = folder_.Path("missing/x.cfg");
    _HREGISTRY_* handle = registryOpen(path.c_str(), "S");
    ASSERT_NE(handle, nullptr);
    registrySetInt(handle, "k", 1);
    registryFlush(handle);
    EXPECT_EQ(rmdir(folder_.Path().c_str()), 0);
}
