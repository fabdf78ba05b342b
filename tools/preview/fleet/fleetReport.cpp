// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fleetReport.h"

#include <algorithm>

std::string PlaceText(const std::string& file, const std::string& section, const std::string& key)
{
    return file + " [" + section + "] " + key;
}

std::string PlaceText(const PlaceCount& place)
{
    if (place.section.empty() && place.key.empty())
        return place.file;
    if (!place.isXml)
        return PlaceText(place.file, place.section, place.key);
    return place.file + " " + place.section + (place.key.empty() ? "" : " " + place.key);
}

std::string SummaryOf(const FleetReport& report)
{
    const std::string phones = std::to_string(report.phones.size()) +
                               (report.phones.size() == 1 ? " phone" : " phones") + ", mode " +
                               Join(report.modes, ", then ") + ": ";
    if (report.isDifference) {
        const auto differ = std::count_if(report.phones.begin(), report.phones.end(),
                                          [](const PhoneRow& row) { return row.places != 0; });
        return phones + std::to_string(differ) + " end different";
    }
    std::vector<std::string> words;
    for (std::size_t i = 0; i < kEndingCount; ++i)
        words.push_back(std::to_string(report.byEnding[i]) + " " + kEndingWords[i]);
    return phones + Join(words);
}
