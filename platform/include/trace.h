// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// The device's trace: standard error, never the system log, because traces carry secrets in clear.
///
/// The environment variable ETL_TRACE_LEVEL (default 3) is the highest level that is written; with 0 the scoped entry
/// traces are silent as well.
namespace ETL_TraceHelper
{

/// Trace levels that this program uses.
constexpr int kTraceData = 2;     ///< missing, unreadable or empty data files; password conversions
constexpr int kTracePassword = 3; ///< failures of the password pass

/// Writes "etlTrace <level>: <text>" to standard error; a text that does not end in a line feed gets one. Never fails.
///
/// @param level   0 or higher; written when it is not above ETL_TRACE_LEVEL
/// @param format  printf format; values from files are arguments, never the format
void etlTrace(int level, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// Traces the way into and out of a function: "chTraceStack: enter <name>" when it is made and "chTraceStack: leave
/// <name>" when it goes, on every way out.
class chTraceStack
{
public:
    /// @param name  the function's name; kept by address, so a literal
    explicit chTraceStack(const char* name);
    ~chTraceStack();
    chTraceStack(const chTraceStack&) = delete;
    chTraceStack& operator=(const chTraceStack&) = delete;

private:
    const char* name_;
};

} // namespace ETL_TraceHelper
