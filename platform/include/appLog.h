// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// Severities of the application log, on the scale of the system log.
enum AppLogLevel {
    kAppLogWarning = 4,
    kAppLogInformation = 6,
};

/// The module number of this program in the application log.
constexpr int kAppLogModule = 60;

/// Reports to the application log.
///
/// Goes to the system log (ident "kestrune", facility user, severity = `level`) and to standard error as
/// "app_log <module>/<level>: <text>". A text that does not end in a line feed gets one on standard error. Reports of
/// any length are written whole. Never fails: a closed, full or missing log changes nothing. If the log socket is full,
/// waits up to one second, once per run; messages that do not fit go to standard error only.
///
/// @param module  the reporting program's number (this program: `kAppLogModule`)
/// @param level   severity, 0 (emergency) to 7 (debug)
/// @param format  printf format; values from files are arguments, never the format
void app_log(int module, int level, const char* format, ...) __attribute__((format(printf, 3, 4)));
