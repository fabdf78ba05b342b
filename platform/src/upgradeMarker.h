// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

/// The upgrade's marker, "/config/kestrune-pending": the mode words that are still to run, one a line, in their order.

struct UpgradeMarker {
    std::string word;     ///< the first one; empty when it lists none
    std::string rest;     ///< what the marker is without that line; empty when no other word follows
    bool isEmpty = false; ///< a file without a word. One that cannot be read lists none either, but is not empty.
};

/// @return whether anything has the marker's name, or may have it: without an answer it counts as there, so that no mode
///         happens twice
bool IsMarkerThere();

/// Reads the marker: a regular file of at most 4 MiB.
UpgradeMarker ReadMarker();

/// @return the marker that the text is
UpgradeMarker ParseMarker(std::string_view text);
