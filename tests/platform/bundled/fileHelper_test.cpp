// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Copies without a path fail.

#include "fileHelper.h"

#include <gtest/gtest.h>

#include "scratchFolder.h"

using ETL_SubClass::etlCopyFile;

TEST(BundledFileHelper, ACopyWithoutAPathFails)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("file");
    WriteBytes(path, "old");
    EXPECT_EQ(etlCopyFile(path.c_str(), /*sourcePath=*/nullptr), 0);
    EXPECT_EQ(etlCopyFile(path.c_str(), ""), 0);
    EXPECT_EQ(etlCopyFile(/*destinationPath=*/nullptr, path.c_str()), 0);
    EXPECT_EQ(etlCopyFile("", path.c_str()), 0);
    EXPECT_EQ(ReadBytes(path), "old");
}
