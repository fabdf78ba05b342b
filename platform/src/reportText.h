// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdarg>
#include <string>

/// The formatted text, of any length; empty if it cannot be formatted.
std::string FormatReport(const char* format, std::va_list arguments) __attribute__((format(printf, 1, 0)));

/// Writes one report to standard error, and adds a line feed if it has none. Failures are ignored, since there is no
/// other place to report them.
void WriteReport(std::string report);
