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
    ACopy,  ///< a copy of the source's bytes
    Another ///< converted from the source, such as a translation
};

/// The source of a new file, and the file that it replaces.
struct FileOrigin {
    std::string replaced;            ///< the regular file that it replaces; empty for a new file
    std::string source;              ///< the file that it is made from; empty, or missing, if there is none
    MadeOf madeOf = MadeOf::Nothing; ///< how it is made from the source
    mode_t newFileMode = 0;          ///< permission bits of a new file that has no source; may be `kModeLessUmask`
};

/// Sets the owner, group and permission bits of an open file so that no user can read more than before.
///
/// | file                     | gets                                                                                       |
/// | ------------------------ | ------------------------------------------------------------------------------------------ |
/// | replaces a file          | that file's owner, group, bits, access list and extended attributes                        |
/// | the same, and is a copy  | of the bits only those that the source also has                                            |
/// | new, a copy              | all attributes of the source                                                               |
/// | new, made from another   | the source's owner and group; of a new file's bits only those that the source also has     |
/// | new                      | `newFileMode`                                                                              |
///
/// If an access list cannot be kept, only the owner has access. If the owner or group cannot be set, group and others
/// get the access that both had.
///
/// @return 0; otherwise the error number of the call that failed
[[nodiscard]] int GiveAttributes(int file, const FileOrigin& origin);
