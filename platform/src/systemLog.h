// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

constexpr int kSystemLogWarning = 4; ///< as syslog(3) counts severity

/// Writes only to the system log. A stalled log daemon is waited for only once in a run.
///
/// @param level  severity, as syslog(3) counts it
/// @param text   no secret: many people read the system log
void WriteToSystemLog(int level, const std::string& text);
