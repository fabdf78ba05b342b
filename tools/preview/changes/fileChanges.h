// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "itemChanges.h"
#include "items/fileFormats.h"
#include "phoneImage/snapshot.h"
#include "steps/phoneStates.h"

/// One changed file, with its secrets in clear.
struct FileChange {
    std::string path;
    ChangeKind kind;
    FileFormat format;
    std::string before; ///< bytes; where a link leads
    std::string after;
    bool isFile = true;    ///< otherwise a link, folder or something else
    std::string sameAs;    ///< the file that a new one is a copy of, or that is one of a removed one; empty for none
    bool hasItems = false; ///< its values were read, and `items` has every one that changed
    std::vector<ItemChange> items;
    bool hasSameValues = false; ///< XML: the same values in the same order, and the rest of the bytes does not matter
    std::vector<std::string> passes;
};

/// Compares two states of a phone.
///
/// @param states  the phone between the passes; empty when it is not known
/// @return by path
std::vector<FileChange> FindChanges(const Snapshot& before, const Snapshot& after, const std::vector<PassState>& states,
                                    const FileFormats& formats);
