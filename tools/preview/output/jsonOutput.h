// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <nlohmann/json_fwd.hpp>
#include <vector>

#include "shown/shownPreview.h"

/// The version of the form, which preview.schema.json describes. It changes when a reader of the old form would be misled.
constexpr int kJsonVersion = 3;

struct JsonStyle {
    bool withReports = false;
    bool isRevealed = false; ///< the previews show secrets
};

/// The previews as JSON. The same images, modes and programs give the same text: it contains no time and no path of this
/// machine.
nlohmann::ordered_json ToJson(const std::vector<Preview>& previews, const JsonStyle& style);
