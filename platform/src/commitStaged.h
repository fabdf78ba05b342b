// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// The run that is to be committed.
struct RunToCommit {
    std::string mode;                ///< its word
    bool isOfUpgrade = false;        ///< whether the marker lists it
    std::string laterWords;          ///< the content of the marker afterwards
    bool hasFinishedEarlier = false; ///< it found a run that was interrupted in its commit
};

/// What became of the files of a run.
struct CommitResult {
    int changed = 0; ///< written or removed
    int failed = 0;
};

/// Writes the staged changes to the device: all as one step, with a record that the next run finishes; or one after the
/// other, each whole, if there is no space for all at once. Files that end unchanged only get a new modification time.
/// A failure does not affect the other files, and is reported to the system log.
///
/// A single change has a record too: without it, a run that was killed before it flushed the folder would leave a name
/// that a file system without a journal may assign to another file's bytes, or, if the file system renames in two
/// writes, a second name.
CommitResult CommitStaged(const RunToCommit& run);
