// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// The device's files that more than one pass opens.

constexpr char kUserIni[] = "/config/user/user.ini";
constexpr char kFactoryUserIni[] = "/phone/factory/user/user.ini";
constexpr char kSystemIni[] = "/config/system/system.ini";

/// Through this file mode "1" hands settings over to mode "2".
constexpr char kHandOverFile[] = "/tmp/VersionInfo.cfg";
/// The same, while an upgrade is pending: "/tmp" is empty after a power cut.
constexpr char kHandOverCopy[] = "/config/kestrune-handover";

/// The account files are numbered from 0 to this.
constexpr int kLastAccount = 16;

/// @return "/config/user/voip/sipAccount<number>.cfg"
std::string AccountFilePath(int number);
