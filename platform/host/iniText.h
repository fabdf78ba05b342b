// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Reads and changes the text of a configuration file in place. Contains only the rules of the format.

enum class IniLineKind {
    Section,
    Key,
    Other, ///< comment, blank line, or anything else: kept, never read
};

/// One line, as positions in the text.
struct IniLine {
    IniLineKind kind;
    std::size_t contentEnd; ///< the beginning of its line end, if it has one
    std::size_t end;        ///< the beginning of the next line
    std::string_view name;  ///< of the section or key
    std::string_view value; ///< of the key
};

/// @param begin  where the line begins; less than the text's size. A key line is reported as such even before the first
///               section line, where it does not count.
IniLine ReadIniLine(std::string_view text, std::size_t begin);

/// @return the beginning of the first line: after a UTF-8 byte order mark, if the text has one
std::size_t FirstIniLine(std::string_view text);

/// @return the value of the first key of that name in the first section of that name that contains it; refers to `text`
std::optional<std::string_view> FindIniValue(std::string_view text, std::string_view section, std::string_view key);

/// Sets a key; adds the key and the section if they are absent.
///
/// @return false, with the text unchanged, if the format cannot contain the key or value
[[nodiscard]] bool SetIniValue(std::string& text, std::string_view section, std::string_view key,
                               std::string_view value);
