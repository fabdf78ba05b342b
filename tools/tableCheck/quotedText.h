// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

/// @return the text with "\xNN" for every byte that is not printable ASCII and "\\" for a backslash: a table must not be
///         able to write to the terminal, or to change the order of what is read there
std::string EscapedText(std::string_view text);

/// @return the escaped text between quotes
std::string QuotedText(std::string_view text);
