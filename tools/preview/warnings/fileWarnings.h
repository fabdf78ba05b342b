// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include "runFacts.h"
#include "warningList.h"

/// Adds what the phone's files show and no report says: limits that cut data off, files with another root than the pass
/// expects, minutes that were seconds, empty certificates, listed secrets that the cipher refuses.
void AddFileWarnings(const RunFacts& facts, WarningList& list);
