// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "commitRecord.h"

enum class CarryingOut {
    First, ///< by the run that has written the record
    Again, ///< by a later one, which may find some of the changes already made
};

/// Makes the changes of a record that is on the device: renames, then removals. Then removes the note of the run's
/// copies (foreignCopies.h), changes the marker, and removes the record. A change that fails does not affect the
/// others, and is reported to the system log.
///
/// When a record is carried out again, a change whose destination already has the content is done, and a change whose
/// file is not the recorded one is skipped. Some flash file systems rename in two writes, and a power cut between them
/// leaves one file under both names: renaming it again would do nothing, so the temporary name is removed.
///
/// @return false if the note could not be removed or the marker could not be changed: the record stays
[[nodiscard]] bool CarryOut(const CommitRecord& record, CarryingOut turn);

/// Reports to the system log only that a change could not be committed, and counts it.
void ReportFailure(const std::string& path, int error);

/// @return how many changes of files could not be committed since the process started; the marker does not count
int FailureCount();
