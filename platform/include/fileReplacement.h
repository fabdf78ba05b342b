// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string_view>
#include <sys/types.h>

/// The only way in which this program writes files: a reader, a crash or a power cut finds the whole old file or the
/// whole new one.
///
/// Between `BeginRun` and `CommitRun` (runCommit.h) a change is staged: later reads of this process see it, under every
/// name that leads to the file, and the commit writes it to the device together with all others. Outside of a run it is
/// made at once.

/// Permission bits of a new file: 0644 less the process's umask.
constexpr mode_t kModeLessUmask = static_cast<mode_t>(-1);

/// Replaces the file's content as one step.
///
///     /config/user/user.ini                old bytes                old bytes            NEW bytes
///     /config/user/user.ini.kestrune-new   NEW bytes, not flushed   NEW bytes, flushed   -
///                                          1-2                      3-4                  5
///
/// 1. Creates "<path>.kestrune-new" in the same folder (a stale one is removed; no link is followed), readable only by
/// its
///    owner.
/// 2. Writes the bytes.
/// 3. Sets its owner, group and permission bits.
/// 4. Flushes it to the device.
/// 5. Renames it over the destination, and flushes the folder.
///
/// | destination                               | what happens                                                 |
/// | ----------------------------------------- | ------------------------------------------------------------ |
/// | missing                                   | created with `newFileMode`                                   |
/// | regular file                              | replaced; owner, group, permission bits, access list and     |
/// |                                           | extended attributes stay                                     |
/// | regular file that contains these bytes    | nothing is written; its modification time becomes now        |
/// | link                                      | stays a link; its target is replaced (or created)            |
/// | another user's link or file in a          | replaced itself, as if missing; the target of the link is    |
/// | world-writable folder                     | not touched                                                  |
/// | folder, pipe, socket, device, link loop   | failure                                                      |
/// | its folder is missing or read-only        | failure; folders are never created                           |
/// | no space                                  | failure; in a run, of the commit                             |
///
/// @param path         zero-terminated, not null
/// @param bytes        the whole new content; not kept
/// @param newFileMode  permission bits of a new file; `kModeLessUmask` for 0644 less the umask
/// @return true if the destination contains the bytes, or will after the commit. On failure the destination is
///         unchanged and no temporary file is left.
[[nodiscard]] bool ReplaceFile(const char* path, std::string_view bytes, mode_t newFileMode = kModeLessUmask);

/// Replaces the file's content with one that is made from another file, such as a translation. A new file gets the
/// other file's owner and group, and only users who can read the other file can read it.
///
/// @param sourcePath  zero-terminated, not null; if missing, a new file is created as by `ReplaceFile`
/// @return as `ReplaceFile`
[[nodiscard]] bool ReplaceDerivedFile(const char* path, std::string_view bytes, const char* sourcePath);

/// Removes a file (standard `remove`: a link itself, or an empty folder), and flushes its folder.
///
/// @return true if it is gone, or will be after the commit
[[nodiscard]] bool RemoveFile(const char* path);
