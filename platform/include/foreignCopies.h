// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

/// Files that the device's own copy command makes in a run. It is neither atomic nor flushed: what a run that was cut has
/// left of its copies, the next one removes.

struct ForeignCopy {
    std::string path;       ///< the file that the command makes
    std::string sourcePath; ///< the file that it copies
};

/// To be called before the first copy. In a run (runCommit.h), notes the files durably in "/config/kestrune-certificates";
/// the commit removes the note. Outside of one, nothing happens.
///
/// @param copies  one that cannot be made, or whose path something has already, is passed over
void NoteForeignCopies(const std::vector<ForeignCopy>& copies);

/// To be called after a copy. Removes one that is not as long as its source. In a run the commit flushes the copy and its
/// folder; outside of one they are flushed at once.
void EndForeignCopy(const ForeignCopy& copy);
