// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <tuple>

class TiXmlElement;

/// One setting of the phone. Records are compared by these.
struct Place {
    std::string file; ///< without "." and ".." in it, so that two ways to write one path are one place
    std::string section;
    std::string key;

    auto Parts() const { return std::tie(file, section, key); }
    bool operator==(const Place& other) const { return Parts() == other.Parts(); }
    bool operator<(const Place& other) const { return Parts() < other.Parts(); }
};

/// @param file  as the table has it
Place MakePlace(const std::string& file, const std::string& section, const std::string& key);

/// One record as the program reads it.
struct TableRecord {
    const TiXmlElement* element;
    std::optional<Place> source; ///< nothing when an attribute is absent
    Place destination;
    std::string destinationFile; ///< as the table has it
    bool isEnciphered = false;   ///< the encrypt flag

    int Line() const;
    bool IsInPlace() const { return source && *source == destination; }
};

TableRecord ReadTableRecord(const TiXmlElement& element);

/// @return true for a path that is empty or can only be a folder's
bool NamesNoFile(const std::string& path);

/// @return the line of an attribute; the record's when it has none of that name
int AttributeLine(const TiXmlElement& element, std::string_view name);

/// @return a place as findings name it, such as "[Audio] nVolume of /config/user/user.ini", escaped
std::string Describe(const Place& place);
