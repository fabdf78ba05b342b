// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "phoneFacts.h"

std::string AccountFilePath(int number)
{
    return "/config/user/voip/sipAccount" + std::to_string(number) + ".cfg";
}
