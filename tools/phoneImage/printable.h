// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

enum class Backslashes {
    Doubled, ///< so that an escape and a text that looks like one differ
    Kept,    ///< of a text that is printable already
};

/// Makes bytes from an image fit for a terminal, a JSON text and a page. Escapes such as "\x1b" and "\u202e" take the place
/// of bytes that are no UTF-8, of control characters, and of characters that cannot be seen or that turn or break a line.
///
/// @return UTF-8 on one line
std::string Printable(std::string_view bytes, Backslashes backslashes = Backslashes::Doubled);
