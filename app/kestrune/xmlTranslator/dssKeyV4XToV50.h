// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <list>
#include <string>

/// One DSS key. A key of type "N/A", or without data, keeps the values that stand here.
struct DSSKeyRecord {
    std::string type;
    std::string value;
    std::int32_t line = -1;
    std::string label;
    std::string extension;
};

/// DSS keys: two type names are respelled, keys of type "N/A" keep only their type, and the first 18 keys are kept.
///
/// Reads:     `oldPath`
/// Writes:    `newPath`; a list without keys gives a file without keys
/// Result:    1 when it was saved, else 0; 0 when a path is null
/// Failures:  no or unreadable keys: nothing is written
/// Twice:     writes the same file again
int DSSKeyV4XToV50(const char* oldPath, const char* newPath);

/// @param keys  emptied when the file exists, then filled in document order with every key
/// @return 1 when the file was read; 0 when the path is null, or the file is missing, does not load or has another root
int GetV4XDSSKeyData(const char* oldPath, std::list<DSSKeyRecord>& keys);

/// @param oldPath  the file whose owner a new one gets, and whose readers are the most that it may have; may be null
/// @return 1 when the file was saved; 0 when it was not or the path is null
int SetV50DSSKeyData(const char* newPath, const std::list<DSSKeyRecord>& keys, const char* oldPath = nullptr);
