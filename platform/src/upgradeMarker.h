// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

/// The upgrade's marker, "/config/kestrune-pending": the mode words that are still to run, one per line, in order.

struct UpgradeMarker {
    std::string word;     ///< the first word; empty if there is none
    std::string rest;     ///< the marker without that line; empty if no other word follows
    bool isEmpty = false; ///< whether the file has no word. An unreadable marker has no word either, but is not empty.
};

/// @return whether the marker exists, or may exist: on an error it counts as existing, so that no mode runs twice
bool IsMarkerThere();

/// Reads the marker: a regular file of at most 4 MiB.
UpgradeMarker ReadMarker();

/// @return the parsed marker
UpgradeMarker ParseMarker(std::string_view text);
