// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <vector>

#include "secrets/secrets.h"
#include "shownPreview.h"
#include "steps/runReports.h"

/// Makes reports fit to be shown: the values of secret places are hidden wherever a report repeats them, and both forms
/// of what the cipher made of one.
ShownReports ShowReports(const RunReports& reports, const std::vector<TableRecord>& records, const Secrets& secrets);
