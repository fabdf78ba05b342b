#pragma once

#include <string>

/// The device's files that more than one pass opens.

constexpr char kUserIni[] = "/config/user/user.ini";
constexpr char kFactoryUserIni[] = "/phone/factory/user/user.ini";

/// The account files are numbered from 0 to this.
constexpr int kLastAccount = 16;

/// @return "/config/user/voip/sipAccount<number>.cfg"
std::string AccountFilePath(int number);
