// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "reportText.h"

#include <cstdio>
#include <unistd.h>

#include "boundedOutput.h"

std::string FormatReport(const char* format, std::va_list arguments)
{
    std::va_list copy;
    va_copy(copy, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (length < 0)
        return std::string();

    std::string text(static_cast<std::size_t>(length) + 1, '\0'); // vsnprintf adds a zero byte
    (void)std::vsnprintf(text.data(), text.size(), format, arguments);
    text.pop_back();
    return text;
}

void WriteReport(std::string report)
{
    if (report.empty() || report.back() != '\n')
        report += '\n';
    WriteWithinBounds(STDERR_FILENO, report);
}
