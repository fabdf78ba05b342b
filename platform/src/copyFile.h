// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// Copies a whole file, as `ReplaceFile` does. A destination that is a link to its own source gets a file of its own in
/// the link's place, so that removing the source loses nothing. In a run, removing the source afterwards waits for the
/// copy: a copy that the commit could not make keeps its source.
///
/// @param destinationPath  zero-terminated, not null; a file that was missing gets the source's permission bits
/// @param sourcePath       zero-terminated, not null
/// @return true when the destination holds the source's bytes, or will hold them after the commit
bool CopyFile(const char* destinationPath, const char* sourcePath);
