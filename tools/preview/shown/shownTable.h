// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <vector>

#include "secrets/secrets.h"
#include "shownPreview.h"
#include "steps/phoneLists.h"

/// Makes the records of the table fit to be shown: secrets hidden, texts printable.
///
/// @param outcomes  of each record, in the same order
std::vector<ShownRecord> ShowRecords(const std::vector<TableRecord>& records,
                                     const std::vector<RecordOutcome>& outcomes, const Secrets& secrets);

/// Makes keys that the table forgets fit to be shown.
std::vector<ShownForgottenKey> ShowForgotten(std::vector<ForgottenKey> keys, const Secrets& secrets);
