// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// Files that a run leaves for the next one in "/config". They list files to rename and to remove, so a file that
/// another user may have written is not trusted.

constexpr char kNoteFolder[] = "/config";

enum class PrivateFileState {
    Missing,
    Whole,
    Untrusted,  ///< not a regular file of the running user with one link, not readable for that user, writable for
                ///< others, or larger than 4 MiB
    Unreadable, ///< may be a whole file, but cannot be read now
};

/// @param text  receives the content of a whole file
[[nodiscard]] PrivateFileState ReadPrivateFile(const char* path, std::string& text);

/// Creates the file exclusively, readable only by its owner, and flushes it and its folder.
///
/// @return 0; otherwise the error number of the call that failed, and the file does not exist
[[nodiscard]] int WritePrivateFile(const char* path, const std::string& text);

/// Removes any file of that name, unless it is a folder, and flushes its folder.
void RemovePrivateFile(const char* path);
