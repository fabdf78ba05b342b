// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <ostream>

#include "shown/shownPreview.h"

struct TextStyle {
    bool withColour = false;
    bool withReports = false;
};

/// Writes a preview for a terminal: the summary, the warnings, each file's changes, what a second run would change, and
/// the reports if they are asked for.
///
/// @param preview  one without an error
void WriteText(std::ostream& out, const Preview& preview, const TextStyle& style);
