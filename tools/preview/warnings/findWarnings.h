// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <vector>

#include "runFacts.h"
#include "shown/shownPreview.h"

/// Finds what goes wrong in a run, or may go wrong after it.
std::vector<ShownWarning> FindWarnings(const RunFacts& facts);
