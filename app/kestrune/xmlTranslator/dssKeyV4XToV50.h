// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <list>
#include <string>

/// One DSS key. A key of type "N/A", or without data, keeps these default values.
struct DSSKeyRecord {
    std::string type;
    std::string value;
    std::int32_t line = -1;
    std::string label;
    std::string extension;
};

/// DSS keys: two type names get a new spelling, keys of type "N/A" keep only their type, and the first 18 keys are
/// kept.
///
/// Reads:     `oldPath`
/// Writes:    `newPath`; a list without keys gives a file without keys
/// Result:    1 if it was saved, else 0; 0 if a path is null
/// Failures:  if the keys are missing or unreadable, nothing is written
/// Twice:     writes the same file again
int DSSKeyV4XToV50(const char* oldPath, const char* newPath);

/// @param keys  cleared if the file exists, then filled with all keys in document order
/// @return 1 if the file was read; 0 if the path is null, or the file is missing, does not load or has another root
int GetV4XDSSKeyData(const char* oldPath, std::list<DSSKeyRecord>& keys);

/// @param oldPath  the source file: a new file gets its owner, and no readers that the source does not have; may be
///                 null
/// @return 1 if the file was saved; 0 if it was not or the path is null
int SetV50DSSKeyData(const char* newPath, const std::list<DSSKeyRecord>& keys, const char* oldPath = nullptr);
