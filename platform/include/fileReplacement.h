// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string_view>
#include <sys/types.h>

/// The one way in which this program writes files: a reader, a crash or a power cut finds the old file whole or the new
/// one.
///
/// Between `BeginRun` and `CommitRun` (runCommit.h) a change is staged: later reads of this process see it, under every
/// name that leads to the file, and the device gets it in the commit, together with all others. Outside of a run it is
/// made at once.

/// Permission bits of a new file: 0644 less the process's umask.
constexpr mode_t kModeLessUmask = static_cast<mode_t>(-1);

/// Replaces the file's content as one step.
///
///     /config/user/user.ini                old bytes                old bytes            NEW bytes
///     /config/user/user.ini.kestrune-new   NEW bytes, not flushed   NEW bytes, flushed   -
///                                          1-2                      3-4                  5
///
/// 1. Makes "<path>.kestrune-new" afresh in the same folder (a stale one is removed; no link is followed), readable by
///    its owner alone.
/// 2. Writes the bytes.
/// 3. Gives it owner, group and permission bits.
/// 4. Flushes it to the device.
/// 5. Renames it over the destination, and flushes the folder.
///
/// | destination                               | what happens                                                 |
/// | ----------------------------------------- | ------------------------------------------------------------ |
/// | missing                                   | made with `newFileMode`                                      |
/// | regular file                              | replaced; owner, group, permission bits, access list and     |
/// |                                           | extended attributes stay                                     |
/// | regular file that holds these bytes       | nothing is written; its modification time becomes now        |
/// | link                                      | stays a link; the file that it names is replaced (or made)   |
/// | another user's link or file in a folder   | replaced itself, as if nothing had that name; where a link   |
/// | that everyone may write to                | leads is not touched                                         |
/// | folder, pipe, socket, device, link loop   | failure                                                      |
/// | its folder is missing or read-only        | failure; folders are never made                              |
/// | no space                                  | failure; in a run, of the commit                             |
///
/// @param path         zero-terminated, not null
/// @param bytes        the whole new content; not kept
/// @param newFileMode  permission bits of a file that was missing; `kModeLessUmask` for 0644 less the umask
/// @return true when the destination holds the bytes, or will hold them after the commit. On failure the destination is
///         as it was and no temporary file is left.
bool ReplaceFile(const char* path, std::string_view bytes, mode_t newFileMode = kModeLessUmask);

/// Replaces the file's content, which is made out of what another file holds, as a translation is. A new file gets the
/// other one's owner and group, and only those may read it who may read that one.
///
/// @param sourcePath  zero-terminated, not null; a missing one leaves a new file as `ReplaceFile` makes it
/// @return as `ReplaceFile`
bool ReplaceDerivedFile(const char* path, std::string_view bytes, const char* sourcePath);

/// Removes a file (standard `remove`: a link itself, or an empty folder), and flushes its folder.
///
/// @return true when it is gone, or will be gone after the commit
bool RemoveFile(const char* path);
