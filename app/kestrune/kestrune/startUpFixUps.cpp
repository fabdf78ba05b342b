// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "startUpFixUps.h"

#include <string>

#include "devicePaths.h"
#include "fileHelper.h"
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
        // An absent key and one that says "none" already need not be told apart: writing the second again does no harm.
        if (etlGetProfileInt(path.c_str(), "account", "SCALineKeyNumber", kNoSharedLineKey) == kNoSharedLineKey)
            etlSetProfileInt(path.c_str(), "account", "SCALineKeyNumber", kNoSharedLineKey);
    }
}

void InitRingbackTimeout()
{
    // "Feature" is a section of its own beside "Features".
    if (etlGetProfileInt(kUserIni, "Feature", "RingbackTimeout", kNoRingbackTimeout) != kNoRingbackTimeout)
        return;
    const int timeout = etlGetProfileInt(AccountFilePath(0).c_str(), "account", "CancelTimer", kDefaultCancelTimer);
    etlSetProfileInt(kUserIni, "Feature", "RingbackTimeout", timeout);
}
