// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "trace.h"

#include <cstdarg>
#include <cstdlib>
#include <string>

#include "integerText.h"
#include "reportText.h"

namespace ETL_TraceHelper
{

namespace
{

constexpr int kDefaultLevel = 3;

int HighestLevel()
{
    const char* setting = std::getenv("ETL_TRACE_LEVEL");
    return setting == nullptr || *setting == '\0' ? kDefaultLevel : ParseInt32(setting);
}

void TraceScope(const char* direction, const char* name)
{
    if (HighestLevel() > 0)
        WriteReport(std::string("chTraceStack: ") + direction + " " + name);
}

} // namespace

void etlTrace(int level, const char* format, ...)
{
    if (level > HighestLevel())
        return;
    std::va_list arguments;
    va_start(arguments, format);
    const std::string text = FormatReport(format, arguments);
    va_end(arguments);
    WriteReport("etlTrace " + std::to_string(level) + ": " + text);
}

chTraceStack::chTraceStack(const char* name) : name_(name)
{
    TraceScope("enter", name_);
}

chTraceStack::~chTraceStack()
{
    try {
        TraceScope("leave", name_);
    } catch (...) {
        // No memory for the report: the exit is not traced.
    }
}

} // namespace ETL_TraceHelper
