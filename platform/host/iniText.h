// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Reading and changing the text of a configuration file in place: the rules of the format, and nothing else.

enum class IniLineKind {
    Section,
    Key,
    Other, ///< comment, blank line, or anything else: kept, never read
};

/// One line, as positions in the text.
struct IniLine {
    IniLineKind kind;
    std::size_t contentEnd; ///< where its line end, if it has one, begins
    std::size_t end;        ///< where the next line begins
    std::string_view name;  ///< of the section or key
    std::string_view value; ///< of the key
};

/// @param begin  where the line begins; less than the text's size. A key line is reported as such even before the first
///               section line, where it does not count.
IniLine ReadIniLine(std::string_view text, std::size_t begin);

/// @return where the first line begins: behind a UTF-8 byte order mark, if the text has one
std::size_t FirstIniLine(std::string_view text);

/// @return the value of the first key of that name in the first section of that name that has it; refers to `text`
std::optional<std::string_view> FindIniValue(std::string_view text, std::string_view section, std::string_view key);

/// Sets a key, adding the key and the section when they are absent.
///
/// @return false, and the text is as it was, for what the format cannot hold
bool SetIniValue(std::string& text, std::string_view section, std::string_view key, std::string_view value);
