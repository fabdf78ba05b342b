// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// The run that is to be committed.
struct RunToCommit {
    std::string mode;         ///< its word
    bool isOfUpgrade = false; ///< whether the marker lists it
    std::string laterWords;   ///< what the marker is to list afterwards
};

/// Brings what was staged to the device: all changes as one, with a record that the next run finishes; one after the other,
/// each whole, when there is no room for all at once. Files that end as they began get another modification time only. What
/// fails does not affect the others, and is reported to the system log.
///
/// A single change has a record too: without it, a run that was killed before it flushed the folder would leave a name that
/// a file system without a journal may give to another file's bytes, and one that renames in two writes a second name.
void CommitStaged(const RunToCommit& run);
