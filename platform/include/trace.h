// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// The device's trace: standard error, never the system log, because traces contain secrets in clear text.
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
/// @param level   0 or higher; written if it is not above ETL_TRACE_LEVEL
/// @param format  printf format; values from files are arguments, never the format
void etlTrace(int level, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// Traces entry to and exit from a function: "chTraceStack: enter <name>" on construction and "chTraceStack: leave
/// <name>" on destruction.
class chTraceStack
{
public:
    /// @param name  the function's name; not copied, so pass a literal
    explicit chTraceStack(const char* name);
    ~chTraceStack();
    chTraceStack(const chTraceStack&) = delete;
    chTraceStack& operator=(const chTraceStack&) = delete;

private:
    const char* name_;
};

} // namespace ETL_TraceHelper
