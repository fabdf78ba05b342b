// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "shown/shownPreview.h"

/// @return bar charts of how many values each pass changed and how many changed in each file, as tables; empty when
///         nothing changed
std::string ChangesChart(const Preview& preview);
