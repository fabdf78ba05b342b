// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "shown/shownPreview.h"

/// A picture of how many values each pass changed, and how many changed in each file: bars, as one SVG element. Empty when
/// nothing changed.
std::string ChangesChart(const Preview& preview);
