// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <tuple>
#include <vector>

#include "fleetReport.h"

/// Adds up the lines of phones. The report does not depend on their order, and the memory does not depend on their number,
/// but for a row for each phone.
class FleetCounter
{
public:
    /// Forgets the tables of the log that was read: their numbers are its own.
    void BeginLog();

    /// Adds a line of a log, which names a phone or holds a table. Throws `nlohmann::json::exception` for another one.
    void Add(const nlohmann::json& line);

    /// @return the number of a table in this log
    /// @param isNew  set to whether no line holds it yet
    std::size_t NumberOf(const nlohmann::json& table, bool& isNew);

    /// @return what was counted; the counter is empty afterwards. Throws `ToolError` when a phone was counted twice
    FleetReport Take();

private:
    using Place = std::tuple<std::string, std::string, std::string>;

    void AddPhone(const nlohmann::json& line);
    void AddWarnings(const nlohmann::json& warnings, bool isGone, PhoneRow& row);
    void AddChanges(const nlohmann::json& changes, PhoneRow& row);
    void AddRecords(const nlohmann::json& table, const std::string& outcomes);
    void AddAllForgotten(const nlohmann::json& files, bool isOwn, const std::string& image);
    void AddForgotten(const Place& key, bool isOwn, const std::string& image);

    std::vector<nlohmann::json> tables_;
    std::map<std::pair<bool, std::string>, RuleCount> rules_;
    std::map<std::pair<bool, std::string>, std::map<std::string, WarningCount>> warnings_;
    std::map<Place, PlaceCount> places_;
    std::map<std::tuple<int, std::string, std::string, int>, RecordCount> records_;
    std::map<Place, ForgottenCount> forgotten_;
    std::vector<PhoneRow> phones_;
};
