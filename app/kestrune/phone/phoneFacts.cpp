// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "phoneFacts.h"

std::string AccountFilePath(int number)
{
    return kAccountFilePrefix + std::to_string(number) + ".cfg";
}
