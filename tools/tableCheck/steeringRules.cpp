// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "steeringRules.h"

#include <algorithm>
#include <vector>

#include "phoneFacts.h"
#include "runCommit.h"
#include "tableRecord.h"

namespace
{

/// What a run leaves for the next one.
constexpr const char* kOwnFiles[] = {kHandOverCopy, kUpgradeMarker, kCommitRecord};

/// Static: made once, and asked about each record.
const std::vector<Place>& Switches()
{
    static const std::vector<Place> switches = {MakePlace(kUserIni, kLockSection, kLockKey),
                                                MakePlace(kUserIni, "Sync", "SyncCfgByVersion"),
                                                MakePlace(kVersionIni, kSyncSection, kEnableKey)};
    return switches;
}

} // namespace

void CheckSteering(const TableRecord& record, Findings& findings)
{
    const Place& to = record.destination;
    const bool isOwnFile = std::find(std::begin(kOwnFiles), std::end(kOwnFiles), to.file) != std::end(kOwnFiles);
    if (isOwnFile || std::find(Switches().begin(), Switches().end(), to) != Switches().end())
        findings.push_back({"KT032", record.Line(),
                            Describe(to) + " is read by the program itself: the record changes what the rest of the "
                                           "run, or the next one, does"});
}
