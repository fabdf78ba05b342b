// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include "runFacts.h"
#include "warningList.h"

/// Adds what the reports of the runs say: passes that stopped early, files that did not load, values that the cipher
/// refused.
void AddReportWarnings(const RunFacts& facts, WarningList& list);

/// Warns if the phone has no cipher key. Called where the program was to encipher a value, whatever became of it: one that
/// refuses the development key leaves it plain.
void AddKeyWarning(const RunFacts& facts, WarningList& list);
