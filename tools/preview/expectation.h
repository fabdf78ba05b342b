// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "secrets/secrets.h"
#include "shown/shownPreview.h"

/// What counts in an approved preview; never null.
using Approved = std::shared_ptr<const nlohmann::json>;

/// Reads a JSON file that `--json` wrote earlier. Throws `ToolError` when it cannot be read or is something else, and when
/// it shows secrets and this run does not, or the other way round: the comparison would be of no use, and would show them.
Approved ReadApproved(const std::filesystem::path& path, Secrecy secrecy);

/// Compares previews with the approved ones, in their order. The names of the images, the reports, the lines of records and
/// the version of the program that made them do not count; errors do.
///
/// @return one line for each difference, printable; empty when they are equal
std::vector<std::string> DifferencesFrom(const Approved& approved, const std::vector<Preview>& previews);
