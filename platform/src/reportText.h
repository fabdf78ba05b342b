// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdarg>
#include <string>

/// The text that the format gives, of any length; empty when it cannot be formatted.
std::string FormatReport(const char* format, std::va_list arguments) __attribute__((format(printf, 1, 0)));

/// Writes one report to standard error, with a line feed behind it if it has none. Failures are ignored: there is
/// nobody left to tell.
void WriteReport(std::string report);
