// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "startUpFixUps.h"

#include <string>

#include "fileHelper.h"
#include "phoneFacts.h"
#include "profile.h"

namespace
{

constexpr int kNoSharedLineKey = -1;
constexpr int kNoRingbackTimeout = -1;
constexpr int kDefaultCancelTimer = 180;

} // namespace

void SetDefaultSCALineKeyNumber()
{
    for (int number = kLastAccount; number >= 0; --number) {
        const std::string path = AccountFilePath(number);
        if (ETL_MiscHelper::pathFileExist(path.c_str()) == 0)
            continue;
        // No need to distinguish an absent key from -1: rewriting -1 is harmless.
        if (etlGetProfileInt(path.c_str(), kAccountSection, kSharedLineKey, kNoSharedLineKey) == kNoSharedLineKey)
            etlSetProfileInt(path.c_str(), kAccountSection, kSharedLineKey, kNoSharedLineKey);
    }
}

void InitRingbackTimeout()
{
    // "Feature" and "Features" are different sections.
    if (etlGetProfileInt(kUserIni, kRingbackSection, kRingbackKey, kNoRingbackTimeout) != kNoRingbackTimeout)
        return;
    const int timeout =
        etlGetProfileInt(AccountFilePath(0).c_str(), kAccountSection, kCancelTimerKey, kDefaultCancelTimer);
    etlSetProfileInt(kUserIni, kRingbackSection, kRingbackKey, timeout);
}
