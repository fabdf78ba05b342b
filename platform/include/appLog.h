// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// Severities of the application log; the scale is the system log's own.
enum AppLogLevel {
    kAppLogWarning = 4,
    kAppLogInformation = 6,
};

/// The number under which this program reports to the application log.
constexpr int kAppLogModule = 60;

/// Reports to the application log.
///
/// Goes to the system log (ident "kestrune", facility user, severity = `level`) and to standard error as
/// "app_log <module>/<level>: <text>". A text that does not end in a line feed gets one on standard error. A report of
/// any length comes out whole. Never fails: a closed, full or missing log changes nothing. A system log that nobody reads
/// is waited for once, for a second; what it has no place for is on standard error alone.
///
/// @param module  the reporting program's number (this program: `kAppLogModule`)
/// @param level   severity, 0 (emergency) to 7 (debug)
/// @param format  printf format; values from files are arguments, never the format
void app_log(int module, int level, const char* format, ...) __attribute__((format(printf, 3, 4)));
