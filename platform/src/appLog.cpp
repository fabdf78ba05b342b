// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "appLog.h"

#include <cstdarg>
#include <string>

#include "reportText.h"
#include "systemLog.h"

void app_log(int module, int level, const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    const std::string text = FormatReport(format, arguments);
    va_end(arguments);

    WriteToSystemLog(level, text);
    WriteReport("app_log " + std::to_string(module) + "/" + std::to_string(level) + ": " + text);
}
