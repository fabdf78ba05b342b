// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

/// Files that the device's own copy command creates in a run. The command is neither atomic nor flushed: the next run
/// removes the copies of an interrupted one.

struct ForeignCopy {
    std::string path;       ///< the file that the command creates
    std::string sourcePath; ///< the file that it copies
};

/// Call before the first copy. In a run (runCommit.h), writes the file names durably to
/// "/config/kestrune-certificates"; the commit removes this note. Outside of a run, does nothing.
///
/// @param copies  a copy that cannot be made, or whose path already exists, is skipped
void NoteForeignCopies(const std::vector<ForeignCopy>& copies);

/// Call after a copy. Removes a copy that is not as long as its source. In a run the commit flushes the copy and its
/// folder; outside of a run they are flushed at once.
void EndForeignCopy(const ForeignCopy& copy);
