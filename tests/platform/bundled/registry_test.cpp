// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Section handles: null handles, pending changes, and a file that another program changes before the flush.

#include "registry.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "registryFixture.h"

using ETL_SubClass::registryGetString;

namespace
{

class BundledRegistry : public RegistryFixture
{
};

} // namespace

TEST_F(BundledRegistry, ANullHandleReadsTheDefaultAndWritesNothing)
{
    EXPECT_EQ(registryGetInt(nullptr, "k", -3), -3);
    EXPECT_EQ(registryGetString(nullptr, "k", "default"), "default");
    registrySetInt(nullptr, "k", 1);
    registrySetString(nullptr, "k", "v");
    registryFlush(nullptr);
}

TEST_F(BundledRegistry, WhatCannotBeOpenedGivesNull)
{
    EXPECT_EQ(registryOpen(/*path=*/nullptr, "S"), nullptr);
    EXPECT_EQ(registryOpen("", "S"), nullptr);
    EXPECT_EQ(registryOpen(path_.c_str(), /*section=*/nullptr), nullptr);
    EXPECT_EQ(registryOpen(path_.c_str(), ""), nullptr);
    EXPECT_EQ(registryOpen(folder_.Path().c_str(), "S"), nullptr);
    ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
    EXPECT_EQ(Open("S"), nullptr);
}

TEST_F(BundledRegistry, AFileWithoutReadPermissionGivesNull)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "root reads every file";
    WriteBytes(path_, "[S]\nk=1\n");
    ASSERT_EQ(chmod(path_.c_str(), 0200), 0);
    EXPECT_EQ(Open("S"), nullptr);
}

TEST_F(BundledRegistry, AReadSeesThePendingChangesOfItsHandleAlone)
{
    WriteBytes(path_, "[S]\nk=1\n");
    _HREGISTRY_* handle = Open("S");
    _HREGISTRY_* other = Open("S");
    registrySetInt(handle, "k", -2);
    registrySetString(handle, "new", "text");
    EXPECT_EQ(registryGetInt(handle, "k", 0), -2);
    EXPECT_EQ(registryGetString(handle, "new", ""), "text");
    EXPECT_EQ(registryGetInt(other, "k", 0), 1);
    EXPECT_EQ(registryGetString(other, "new", "default"), "default");
    EXPECT_EQ(ReadBytes(path_), "[S]\nk=1\n");
    registryFlush(handle);
    registryFlush(other);
    EXPECT_EQ(ReadBytes(path_), "[S]\nk=-2\nnew=text\n");
}

TEST_F(BundledRegistry, AFlushReadsTheFileAfreshAndKeepsTheChangesOfOthers)
{
    WriteBytes(path_, "[S]\nk=1\nx=1\n");
    _HREGISTRY_* handle = Open("S");
    registrySetInt(handle, "k", 2);
    WriteBytes(path_, "; new\n[T]\ny=3\n[S]\nx=9\nk=7\n");
    registryFlush(handle);
    EXPECT_EQ(ReadBytes(path_), "; new\n[T]\ny=3\n[S]\nx=9\nk=2\n");
}

TEST_F(BundledRegistry, HandlesOfTwoSectionsOfOneFileKeepEachOthersChanges)
{
    _HREGISTRY_* first = Open("S");
    _HREGISTRY_* second = Open("T");
    registrySetInt(first, "k", 1);
    registrySetInt(second, "k", 2);
    registryFlush(second);
    registryFlush(first);
    EXPECT_EQ(ReadBytes(path_), "[T]\nk=2\n\n[S]\nk=1\n");
}

TEST_F(BundledRegistry, AFileThatWentBeforeTheFlushIsMadeWithTheChangesAlone)
{
    WriteBytes(path_, "[S]\nk=1\nx=1\n");
    _HREGISTRY_* handle = Open("S");
    registrySetInt(handle, "k", 2);
    ASSERT_EQ(unlink(path_.c_str()), 0);
    registryFlush(handle);
    EXPECT_EQ(ReadBytes(path_), "[S]\nk=2\n");
}

TEST_F(BundledRegistry, AFileThatNoLongerLoadsIsLeftAlone)
{
    WriteBytes(path_, "[S]\nk=1\n");
    _HREGISTRY_* handle = Open("S");
    registrySetInt(handle, "k", 2);
    ASSERT_EQ(unlink(path_.c_str()), 0);
    ASSERT_EQ(mkdir(path_.c_str(), 0700), 0);
    registryFlush(handle);
    EXPECT_EQ(rmdir(path_.c_str()), 0) << "it is still an empty folder";
    EXPECT_EQ(rmdir(folder_.Path().c_str()), 0) << "no temporary file is left";
}

TEST_F(BundledRegistry, AHandleWithoutChangesSavesNothing)
{
    WriteBytes(path_, "[S]\nk=1\n");
    const FileTrace before = TraceOf(path_);
    _HREGISTRY_* handle = Open("S");
    EXPECT_EQ(registryGetInt(handle, "k", 0), 1);
    registryFlush(handle);
    EXPECT_EQ(TraceOf(path_), before);

    ASSERT_EQ(unlink(path_.c_str()), 0);
    registryFlush(Open("S"));
    EXPECT_FALSE(IsThere());
}

TEST_F(BundledRegistry, WhatCannotBeStoredIsRefusedWhenItIsSet)
{
    WriteBytes(path_, "[S]\nk=1\n");
    const FileTrace before = TraceOf(path_);
    _HREGISTRY_* handle = Open("S");
    registrySetString(handle, "k", "a\nb");
    registrySetString(handle, "k", "a\r");
    registrySetString(handle, "", "v");
    registrySetString(handle, "[k", "v");
    registrySetString(handle, "a=b", "v");
    registrySetInt(handle, " k", 5);
    registrySetInt(handle, ";k", 5);
    EXPECT_EQ(registryGetInt(handle, "k", 0), 1);
    registryFlush(handle);
    EXPECT_EQ(TraceOf(path_), before);

    _HREGISTRY_* oddSection = Open("S]");
    registrySetInt(oddSection, "k", 5);
    registryFlush(oddSection);
    EXPECT_EQ(TraceOf(path_), before);
}
