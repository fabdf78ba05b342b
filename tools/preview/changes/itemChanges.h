// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "items/items.h"
#include "steps/phoneStates.h"

/// What became of a file or a value. Emptied: there was something, and now there is nothing in it.
enum class ChangeKind { Added, Changed, Emptied, Removed };

/// @param before, after  none where there is no file or value; one of them is there
ChangeKind KindOf(const std::optional<std::string>& before, const std::optional<std::string>& after);

/// One changed value.
struct ItemChange {
    ChangeKind kind;
    Item place; ///< its value is the new one, or the old one when it is removed
    std::optional<std::string> before;
    std::optional<std::string> after;
    std::vector<std::string> passes; ///< which changed it, in their order
    bool isOfWholeGroup;             ///< its whole section or record was added or removed
};

/// Compares two contents of one file. A record of an XML file is the same one if it has the same name, or another one at
/// the same position. Its place is then called by its new name.
///
/// @param states, path, format  the file between the passes; the first state has `before`
/// @return in the order of `after`; removed values after what was before them
std::vector<ItemChange> FindItemChanges(const std::vector<Item>& before, const std::vector<Item>& after,
                                        const std::vector<PassState>& states, const std::string& path,
                                        FileFormat format);

/// @return whether both have the same values at the same places, in the same order
bool AreSame(const std::vector<Item>& before, const std::vector<Item>& after);
