// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "fileFormats.h"
#include "phoneImage/secretNames.h"

/// One value of a configuration or XML file, and its place there.
struct Item {
    std::shared_ptr<const std::string>
        group; ///< section, or path of an element such as "DoorPhone/item[2]" or "contactData/group[\"London\"]"; never null
    std::string name; ///< key or attribute; kElementText for the text between an element's tags
    int number = 1;   ///< 2 and more for repeated keys
    std::string value;
    NameSays names = NameSays::Nothing;          ///< of its own name and those of the elements around it
    std::shared_ptr<const std::string> position; ///< as `group`, but with numbers only; never null
};

constexpr char kElementText[] = "(text)";

/// Reads all values of a file, in their order. An element of XML is called by the first attribute that is an id or a name, so
/// that it is the same one wherever it is: "[\"Ann\"]", the next one of that name "[\"Ann\"](2)". It has its number among the
/// siblings of its tag instead if there is no such attribute, or if the value is empty, longer than 64 bytes, possibly a
/// secret, or has a character with which it could be read as something else. The memory that they take is linear in the size of the content.
///
/// @return none for a format without values, and for XML that does not load, is nested too deep, or has element paths of
///         more than 16 MiB in all
std::optional<std::vector<Item>> ReadItems(FileFormat format, const std::string& content);
