// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// The device's files that more than one pass opens.

constexpr char kUserIni[] = "/config/user/user.ini";
constexpr char kFactoryUserIni[] = "/phone/factory/user/user.ini";
constexpr char kSystemIni[] = "/config/system/system.ini";

/// The file in which mode "1" passes settings to mode "2".
constexpr char kHandOverFile[] = "/tmp/VersionInfo.cfg";
/// A copy of it while an upgrade is pending, because "/tmp" is empty after a power cut.
constexpr char kHandOverCopy[] = "/config/kestrune-handover";

/// The account files are numbered from 0 to this number.
constexpr int kLastAccount = 16;

/// @return "/config/user/voip/sipAccount<number>.cfg"
std::string AccountFilePath(int number);
