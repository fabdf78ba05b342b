// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <stdexcept>
#include <string>

/// Why there is no preview of an image, in words for whoever asked for it. May hold names from the image as they stand:
/// to be shown through `Printable`.
class PreviewError : public std::runtime_error
{
public:
    explicit PreviewError(const std::string& text) : std::runtime_error(text) {}
};
