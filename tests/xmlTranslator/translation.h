// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "scratchFolder.h"

/// @return the number of names in the folder
inline std::size_t CountNames(const ScratchFolder& folder)
{
    const std::filesystem::directory_iterator names(folder.Path());
    return static_cast<std::size_t>(std::distance(begin(names), end(names)));
}

/// A translator's old and new file, in a separate folder. The two may be the same.
struct Translation {
    using Translator = int (*)(const char* oldPath, const char* newPath);

    Translation(Translator usedTranslator, const std::string& oldName, const std::string& newName)
        : translator(usedTranslator), oldPath(folder.Path(oldName)), newPath(folder.Path(newName))
    {
    }

    /// Translates to another path; `reports` receives the output on standard error.
    int Translate(const std::string& path)
    {
        testing::internal::CaptureStderr();
        const int result = translator(oldPath.c_str(), path.c_str());
        reports = testing::internal::GetCapturedStderr();
        return result;
    }
    int Translate() { return Translate(newPath); }

    std::size_t FileCount() const { return CountNames(folder); }

    /// Translates an old file with this content, which must succeed, report this, and change only the new file.
    ///
    /// @return the new file
    std::string Translated(const std::string& oldText, const std::string& expectedReports)
    {
        WriteBytes(oldPath, oldText);
        EXPECT_EQ(Translate(), 1) << oldText;
        EXPECT_EQ(reports, expectedReports) << oldText;
        if (newPath != oldPath) {
            EXPECT_EQ(ReadBytes(oldPath), oldText);
        }
        EXPECT_EQ(FileCount(), newPath == oldPath ? 1u : 2u) << oldText;
        return ReadBytes(newPath);
    }

    Translator translator;
    ScratchFolder folder;
    std::string oldPath;
    std::string newPath;
    std::string reports;
};
