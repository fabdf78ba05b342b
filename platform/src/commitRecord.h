// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "contentSum.h"

/// The commit record, "/config/kestrune-commit": the renames and removals of a run. While it exists, that run is not
/// finished.
///
/// Its text is a list of fields, each ended by a zero byte: "kestrune-commit", the format's number, the mode word; then
/// for each change its kind ("rename", "marker", "remove" or "remove-other"), path, length, SHA-256, and the path of
/// the copy that it waits for (or nothing); last "end" and the SHA-256 of all fields before it.

enum class ChangeKind {
    Rename,      ///< the temporary file replaces the path
    Marker,      ///< the same, after everything else
    Remove,      ///< a regular file
    RemoveOther, ///< a link or an empty folder, which has no content
};

struct RecordedChange {
    ChangeKind kind;
    std::string path;
    ContentSum content;       ///< the new content of a renamed file, the last one of a removed file
    std::string waitsForCopy; ///< of a removal: the path of a renamed file that must exist first; otherwise empty
};

struct CommitRecord {
    std::string mode;
    std::list<RecordedChange> changes;
};

std::string TextOf(const CommitRecord& record);

/// @return false if the text is not a whole record of this format
[[nodiscard]] bool ParseRecord(std::string_view text, CommitRecord& record);

/// @return the fields' text with its checksum at the end, as a record has it
std::string WithChecksum(const std::vector<std::string_view>& fields);

/// Parses a text with a checksum into its fields.
///
/// @return false if the checksum does not match
[[nodiscard]] bool CheckAndSplit(std::string_view text, std::vector<std::string_view>& fields);
