// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

/// Makes bytes from an image fit for a terminal, a JSON text and a page: what is no UTF-8, every control character, and
/// every character that turns the direction of a line or breaks it becomes an escape such as "\x1b" or "\u202e". The
/// result is UTF-8 on one line.
std::string Printable(std::string_view bytes);
