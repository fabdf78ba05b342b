// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>

#include "descriptor.h"
#include "output/outputFile.h"

/// The log of a fleet: lines of JSON. The first one says what was run, each other one is a table or a phone.

/// Changes when an older program would misread a line.
constexpr int kFleetLogVersion = 1;

/// Reads a log. Throws `ToolError` when it is none; a last line that was cut is left out.
///
/// @param atLine  called with each line after the first
/// @return the first line
nlohmann::json ReadFleetLog(const std::filesystem::path& path,
                            const std::function<void(const nlohmann::json&)>& atLine);

/// Appends to a log, each line with one call: a run that is interrupted leaves whole lines, and at most one that is cut.
class FleetLog
{
public:
    /// Begins a new log, or goes on with one that has the same first line. Throws `ToolError`, as `Append` does: for a log of
    /// another run, for one that another process writes, and when writing fails.
    ///
    /// @param atLine  called with each line that is there already, but for the first
    FleetLog(const std::filesystem::path& path, const nlohmann::json& first, Readers readers,
             const std::function<void(const nlohmann::json&)>& atLine);

    void Append(const nlohmann::json& line);

private:
    std::filesystem::path path_;
    Descriptor file_;
};
