// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include "runFacts.h"
#include "warningList.h"

/// Adds what the reports of the runs say: passes that stopped early, files that did not load, values that the cipher
/// refused.
void AddReportWarnings(const RunFacts& facts, WarningList& list);
