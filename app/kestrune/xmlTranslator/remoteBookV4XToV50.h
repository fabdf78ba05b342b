// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// Remote phone books: the document gets a new root name and at least six entries; all else in it stays as it is.
///
/// Reads:     `oldPath`
/// Writes:    `newPath`
/// Result:    1 when it was saved, else 0; 0 when a path is null
/// Failures:  no, unreadable or already translated phone books: nothing is written
/// Twice:     writes the same file again
int RemoteBookV4XToV50(const char* oldPath, const char* newPath);
