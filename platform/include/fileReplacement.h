// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string_view>
#include <sys/types.h>

/// The one way in which this program writes files: a reader, a crash or a power cut finds the old file whole or the new
/// one.

/// Permission bits of a new file: 0644 less the process's umask.
constexpr mode_t kModeLessUmask = static_cast<mode_t>(-1);

/// Replaces the file's content as one step.
///
///     /config/user/user.ini                old bytes               old bytes           NEW bytes
///     /config/user/user.ini.kestrune-new   NEW bytes, not synced   NEW bytes, synced   -
///                                          1-2                     3-4                 5
///
/// 1. Makes "<path>.kestrune-new" afresh in the same folder (a stale one is removed; no link is followed), readable by
///    its owner alone.
/// 2. Writes the bytes.
/// 3. Gives it owner, group and permission bits.
/// 4. Flushes it to the device.
/// 5. Renames it over the destination, and remembers the folder for `FlushChangedFolders`.
///
/// | destination                               | what happens                                                 |
/// | ----------------------------------------- | ------------------------------------------------------------ |
/// | missing                                   | made with `newFileMode`                                      |
/// | regular file                              | replaced; owner, group and permission bits stay              |
/// | regular file that holds these bytes       | nothing is written; its modification time becomes now        |
/// | link                                      | stays a link; the file that it names is replaced (or made)   |
/// | another user's link in a sticky folder    | the link itself is replaced; where it leads is not touched   |
/// | folder, pipe, socket, device, link loop   | failure                                                      |
/// | its folder is missing, full or read-only  | failure; folders are never made                              |
///
/// @param path         zero-terminated, not null
/// @param bytes        the whole new content; not kept
/// @param newFileMode  permission bits of a file that was missing; `kModeLessUmask` for 0644 less the umask
/// @return true when the destination holds the bytes. On failure the destination is as it was and no temporary file is
///         left.
bool ReplaceFile(const char* path, std::string_view bytes, mode_t newFileMode = kModeLessUmask);

/// Removes a file (standard `remove`), after its folder and all of `FlushChangedFolders` are flushed: when the original goes,
/// a copy in the same folder is on the device, whichever run made it.
/// The folder that lost it is remembered for the next `FlushChangedFolders`.
///
/// @return true when it is gone
bool RemoveFile(const char* path);

/// Flushes every folder in which a file was renamed or removed since the last call, each once. To be called before a
/// shell command and at the end of the run. A folder that cannot be flushed is left to the system.
void FlushChangedFolders();

/// Flushes a file that someone else wrote (the shell's copy command) and its folder. Nothing happens when it is not
/// there or not a regular file.
void FlushForeignFile(const char* path);
