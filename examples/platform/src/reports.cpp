// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The application log and the trace.

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "appLog.h"
#include "integerText.h"
#include "standardOutput.h"
#include "systemLog.h"
#include "trace.h"

namespace
{

std::string Format(const char* format, va_list values) __attribute__((format(printf, 1, 0)));

std::string Format(const char* format, va_list values)
{
    char* text = nullptr;
    const int size = vasprintf(&text, format, values);
    if (size < 0)
        return "";
    std::string result(text, static_cast<std::size_t>(size));
    std::free(text);
    return result;
}

void WriteToStandardError(std::string line)
{
    if (line.back() != '\n')
        line += '\n';
    (void)std::fwrite(line.data(), 1, line.size(), stderr); // a closed or full one changes nothing
}

int HighestTraceLevel()
{
    constexpr int kDefault = 3;
    const char* setting = std::getenv("ETL_TRACE_LEVEL");
    return setting == nullptr || *setting == '\0' ? kDefault : ParseInt32(setting);
}

} // namespace

std::FILE* StandardOutput()
{
    return stdout; // a stalled reader is waited for here
}

void app_log(int module, int level, const char* format, ...)
{
    va_list values;
    va_start(values, format);
    const std::string text = Format(format, values);
    va_end(values);
    WriteToSystemLog(level, text);
    WriteToStandardError("app_log " + std::to_string(module) + "/" + std::to_string(level) + ": " + text);
}

void ETL_TraceHelper::etlTrace(int level, const char* format, ...)
{
    if (level > HighestTraceLevel())
        return;
    va_list values;
    va_start(values, format);
    const std::string text = Format(format, values);
    va_end(values);
    WriteToStandardError("etlTrace " + std::to_string(level) + ": " + text);
}

ETL_TraceHelper::chTraceStack::chTraceStack(const char* name) : name_(name)
{
    if (HighestTraceLevel() > 0)
        WriteToStandardError("chTraceStack: enter " + std::string(name_));
}

ETL_TraceHelper::chTraceStack::~chTraceStack()
{
    if (HighestTraceLevel() > 0)
        WriteToStandardError("chTraceStack: leave " + std::string(name_));
}
