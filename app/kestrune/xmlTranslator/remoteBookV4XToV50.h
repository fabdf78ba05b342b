// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// Remote phone books: the document gets a new root name and at least six entries; everything else stays the same.
///
/// Reads:     `oldPath`
/// Writes:    `newPath`
/// Result:    1 if it was saved, else 0; 0 if a path is null
/// Failures:  if the phone books are missing, unreadable or already translated, nothing is written
/// Twice:     writes the same file again
int RemoteBookV4XToV50(const char* oldPath, const char* newPath);
