// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What a file is to the preview.
enum class FileFormat { Ini, Xml, Text, Binary };

/// One value of a configuration or XML file, and its place there.
struct Item {
    std::string group; ///< section, or path of a record such as "DoorPhone/item[2]"
    std::string name;  ///< key or attribute; kElementText for what stands between an element's tags
    int number = 1;    ///< 2 and more for doubles of a key
    std::string value;
    std::vector<std::string> names; ///< all names that say what the value is: of the key, or of attribute and elements
};

constexpr char kElementText[] = "(text)";

/// The kind that a path's ending and the bytes suggest.
FileFormat FormatOf(std::string_view path, std::string_view content);

/// Takes a file apart.
///
/// @return none when it is neither a configuration file nor an XML file that loads; otherwise its values in their order
std::optional<std::vector<Item>> ReadItems(FileFormat format, const std::string& content);
