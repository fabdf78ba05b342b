// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <vector>

#include "runFacts.h"
#include "shown/shownPreview.h"

/// What goes wrong, or may, in the run that the facts tell of.
std::vector<ShownWarning> FindWarnings(const RunFacts& facts);
