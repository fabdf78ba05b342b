// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

// Severities of syslog(3)
constexpr int kSystemLogWarning = 4;
constexpr int kSystemLogInformation = 6;

/// Writes only to the system log. Waits for a stalled log daemon only once per run.
///
/// @param level  a severity of syslog(3)
/// @param text   must not contain secrets: many people read the system log
void WriteToSystemLog(int level, const std::string& text);
