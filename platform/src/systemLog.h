// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

constexpr int kSystemLogWarning = 4; ///< as syslog(3) counts severity

/// Writes to the system log, and nowhere else. A log that nobody reads is waited for only once in a run.
///
/// @param level  severity, as syslog(3) counts it
/// @param text   no secret: many people read the system log
void WriteToSystemLog(int level, const std::string& text);
