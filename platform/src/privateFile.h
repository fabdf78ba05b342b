// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// What a run leaves for the next one in "/config". It says which files to rename and to remove, so a file that another
/// user may have written counts as none.

constexpr char kNoteFolder[] = "/config";

enum class PrivateFileState {
    Missing,
    Whole,
    Untrusted,  ///< no regular file of the running user with one link, not to be read by him, writable by others, or
                ///< larger than 4 MiB
    Unreadable, ///< may be ours, but cannot be read now
};

/// @param text  gets the content of a whole file
PrivateFileState ReadPrivateFile(const char* path, std::string& text);

/// Makes the file exclusively, readable only by its owner, and flushes it and its folder.
///
/// @return 0; otherwise the error number of the call that failed, and the file is not there
int WritePrivateFile(const char* path, const std::string& text);

/// Removes whatever has the name, unless it is a folder, and flushes its folder.
void RemovePrivateFile(const char* path);
