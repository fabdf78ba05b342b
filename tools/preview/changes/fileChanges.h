// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "items.h"
#include "phoneImage/snapshot.h"
#include "steps/phoneStates.h"

/// What became of a file or a value. Emptied: there was something, and now there is nothing in it.
enum class ChangeKind { Added, Changed, Emptied, Removed };

/// One value that is another one now.
struct ItemChange {
    ChangeKind kind;
    Item place; ///< its value is the new one, or the old one when it is removed
    std::optional<std::string> before;
    std::optional<std::string> after;
    std::vector<std::string> passes; ///< which changed it, in their order
};

/// One file that has other bytes now, as it stands on the phone: secrets in clear.
struct FileChange {
    std::string path;
    ChangeKind kind;
    FileFormat format;
    std::string before; ///< bytes; where a link leads
    std::string after;
    bool isFile = true;    ///< otherwise a link, folder or something else
    std::string sameAs;    ///< the file that a new one is a copy of, or that is one of a removed one; empty for none
    bool hasItems = false; ///< it was taken apart, and `items` has every value that changed
    std::vector<ItemChange> items;
    std::vector<std::string> passes;
};

/// Compares a phone with what it was.
///
/// @param states  the phone between the passes; empty when nobody knows
/// @return by path
std::vector<FileChange> FindChanges(const Snapshot& before, const Snapshot& after,
                                    const std::vector<PassState>& states);
