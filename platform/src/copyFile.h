// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// Copies a whole file, as `ReplaceFile` does. If the destination is a link to its own source, the copy replaces the
/// link, so that removing the source loses nothing. In a run, a later removal of the source waits for the copy: if the
/// commit cannot make the copy, it keeps the source.
///
/// @param destinationPath  zero-terminated, not null; a new file gets the source's permission bits
/// @param sourcePath       zero-terminated, not null
/// @return true if the destination contains the source's bytes, or will after the commit
[[nodiscard]] bool CopyFile(const char* destinationPath, const char* sourcePath);
