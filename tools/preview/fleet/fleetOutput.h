// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <nlohmann/json_fwd.hpp>
#include <ostream>
#include <string>

#include "fleetReport.h"

/// @return the whole report; fleet.schema.json describes its form
nlohmann::ordered_json FleetJson(const FleetReport& report);

/// Writes what fits on some screens: the rarest changes and the worst phones, and how many more there are.
void WriteFleetText(std::ostream& out, const FleetReport& report);

/// @param pages   folder with pages of phones, which the report links to; empty for none
/// @param folder  the one of the report
/// @return one HTML page that needs no network. A table with many rows ends with their number: the JSON has all of them
std::string FleetPage(const FleetReport& report, const std::filesystem::path& pages,
                      const std::filesystem::path& folder);

/// @return the name of a phone's page in their folder: one file for each image, whatever its name
std::string PageName(const std::string& image);
