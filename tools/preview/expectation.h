// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "shown/shownPreview.h"

/// Compares previews with an approved JSON text of them. The reports do not count: their order is the file system's.
/// Neither do the names of the images. Throws `ToolError` when the file cannot be read or is no such text.
///
/// @return what differs, a line each; empty when nothing does
std::vector<std::string> CompareWithExpected(const std::vector<Preview>& previews,
                                             const std::filesystem::path& expected);
