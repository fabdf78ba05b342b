// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "changes/fileChanges.h"
#include "secrets/secrets.h"
#include "steps/runReports.h"

/// What the warnings are found in.
struct RunFacts {
    const std::vector<std::string>& modes;
    const Snapshot& before;
    const Snapshot& after;
    const std::vector<PassState>& states; ///< empty when the passes are not known
    const std::vector<FileChange>& changes;
    const std::vector<FileChange>& secondRun;
    const std::vector<RunReports>& reports;
    const PhoneLists& lists;
    const Secrets& secrets;
};
