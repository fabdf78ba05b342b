// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "commitRecord.h"

enum class CarryingOut {
    First, ///< by the run that has made the record
    Again, ///< by a later one, which finds some of the changes made already
};

/// Makes the changes of a record that is on the device: renames, then removals; then removes the note of the run's copies
/// (foreignCopies.h), makes the marker's change, and removes the record. A change that fails does not affect the others,
/// and is reported to the system log.
///
/// Carried out again, a change whose destination has the content is done already, and one whose file is not the recorded
/// one is passed over. Some flash file systems rename in two writes, and a cut between them leaves one file under both
/// names: renaming it again would do nothing, so the temporary name is removed.
///
/// @return false when the note could not be removed or the marker's change not be made: the record stays
bool CarryOut(const CommitRecord& record, CarryingOut turn);

/// Reports to the system log only that a change could not be committed.
void ReportFailure(const std::string& path, int error);
