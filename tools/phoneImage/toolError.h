// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <stdexcept>
#include <string>

/// Why a tool cannot do what it was asked to, in words for its user. May hold names from an image as they are: to be shown
/// through `Printable`.
class ToolError : public std::runtime_error
{
public:
    explicit ToolError(const std::string& text) : std::runtime_error(text) {}
};
