// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <string_view>

#include "phoneImage/temporary.h"

/// Who may read an output.
enum class Readers {
    Owner,    ///< its owner only
    AsBefore, ///< as the file that it replaces; whom the umask allows when there was none
};

/// Checks, before any work is done, that an output can be written: its folder is there and may be written to, and the
/// path names nothing yet or a regular file. Throws `ToolError` when it is otherwise.
void RequireWritable(const std::filesystem::path& path);

/// As `RequireWritable`, for a folder that must not be there yet.
void RequireNewFolder(const std::filesystem::path& path);

/// An output that replaces a file in one step: a reader of the file gets the whole old text or the whole new one.
class OutputFile
{
public:
    /// Writes the text to a temporary file in the same folder. Throws `ToolError`; the file is as it was then.
    OutputFile(const std::filesystem::path& path, std::string_view text, Readers readers);

    /// Puts the text in its place. Without this call the file stays as it was. Throws `ToolError`.
    void Commit();

private:
    std::filesystem::path path_;
    Temporary temporary_;
};
