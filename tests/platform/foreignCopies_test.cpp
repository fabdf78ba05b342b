// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Copies that another program has made, outside of a run.

#include "foreignCopies.h"

#include <filesystem>
#include <gtest/gtest.h>

#include "scratchFolder.h"

namespace fs = std::filesystem;

TEST(ForeignCopies, ACopyAsLongAsItsSourceStays)
{
    for (const char* text : {"", "certificate"}) {
        const ScratchFolder folder;
        const ForeignCopy copy = {folder.Path("copy"), folder.Path("source")};
        WriteBytes(copy.sourcePath, text);
        WriteBytes(copy.path, text);
        EndForeignCopy(copy);
        EXPECT_EQ(ReadBytes(copy.path), text);
        EXPECT_EQ(ReadBytes(copy.sourcePath), text);
    }
}

TEST(ForeignCopies, ACopyOfAnotherLengthIsRemovedAndItsSourceStays)
{
    for (const char* text : {"", "certificat", "certificates"}) {
        const ScratchFolder folder;
        const ForeignCopy copy = {folder.Path("copy"), folder.Path("source")};
        WriteBytes(copy.sourcePath, "certificate");
        WriteBytes(copy.path, text);
        EndForeignCopy(copy);
        EXPECT_FALSE(fs::exists(copy.path)) << text;
        EXPECT_EQ(ReadBytes(copy.sourcePath), "certificate");
    }
}

TEST(ForeignCopies, ACopyThatWasNotMadeStaysMissing)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("source"), "certificate");
    NoteForeignCopies({{folder.Path("copy"), folder.Path("source")}});
    EXPECT_FALSE(fs::exists(folder.Path("copy")));
    EndForeignCopy({folder.Path("copy"), folder.Path("source")}); // the command could not make it
    EXPECT_FALSE(fs::exists(folder.Path("copy")));
}
