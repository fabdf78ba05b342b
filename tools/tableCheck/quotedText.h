// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

#include "phoneImage/printable.h"

/// @return the text as findings quote it: made printable, since a table must not be able to write to the terminal or to
///         change the order of what is read there
inline std::string QuotedText(std::string_view text)
{
    return '"' + Printable(text) + '"';
}
