// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "fleet/fleetReport.h"
#include "output/outputFile.h"
#include "preview.h"

struct FleetOptions {
    std::function<Preview(const std::string& image)> makePreview; ///< called by several threads
    std::vector<std::string> modes;
    bool isDifference = false;
    bool isRevealed = false;
    bool withReports = false;
    std::string upgrade;         ///< fingerprint of what is run
    unsigned jobs = 1;           ///< how many images are processed in parallel, from 1
    std::filesystem::path log;   ///< gets a line for each phone as it is done; empty for none
    std::filesystem::path pages; ///< folder for a page of each phone; empty for none
};

/// Makes the previews of many images, with a progress bar, and adds them up. Phones that the log has already are not
/// previewed again. Throws `ToolError`, for a log or page that cannot be written; an image that fails is counted.
///
/// @param errors  gets a line for each image without a preview
FleetReport RunFleet(const std::vector<std::string>& images, const FleetOptions& options, std::ostream& errors);

/// Adds up the logs of parts of a fleet. Throws `ToolError`, also when they are of different runs.
FleetReport MergeLogs(const std::vector<std::filesystem::path>& logs);
