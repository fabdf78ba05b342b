// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <sys/stat.h>

/// @param newFileMode  permission bits, or `kModeLessUmask`
/// @return the permission bits that a new file gets
mode_t ModeOfNewFile(mode_t newFileMode);

enum class MadeOf {
    Nothing,
    ACopy,  ///< of the source's bytes
    Another ///< out of what the source holds, as a translation is
};

/// What a file that takes a name is made of, and what it replaces.
struct FileOrigin {
    std::string replaced;            ///< the regular file whose place it takes; empty for a new file
    std::string source;              ///< the file that it is made of; empty, or missing, when there is none
    MadeOf madeOf = MadeOf::Nothing; ///< how
    mode_t newFileMode = 0;          ///< permission bits of a new file that has no source; may be `kModeLessUmask`
};

/// Gives an open file the owner, group and permission bits that keep anybody from reading more than before.
///
/// | file                     | gets                                                                                       |
/// | ------------------------ | ------------------------------------------------------------------------------------------ |
/// | takes a file's place     | that one's owner, group, bits, access list and extended attributes                         |
/// | the same, and is a copy  | of the bits only what the source has as well                                               |
/// | new, a copy              | everything of the source's                                                                 |
/// | new, made out of another | the source's owner and group; of the bits of a new file only what the source has as well   |
/// | new                      | `newFileMode`                                                                              |
///
/// An access list that cannot be kept leaves the file to its owner. An owner or group that we may not give leaves group and
/// others what both had.
///
/// @return 0; otherwise the error number of the call that failed
int GiveAttributes(int file, const FileOrigin& origin);
