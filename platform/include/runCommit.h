// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// A run changes the phone as one step: after a kill or a power cut at any instant, the next run finds the phone as it was
/// before the run, or finishes it.
///
/// | file                          | is                                                                               |
/// | ----------------------------- | -------------------------------------------------------------------------------- |
/// | /config/kestrune-commit       | the commit record: what is to be renamed and removed; there only during a commit |
/// | /config/kestrune-certificates | the copies that are being made; there only during a run                          |
/// | /config/kestrune-pending      | the upgrade's marker: the mode words that are still to run, one a line           |
///
/// While the marker is there, a mode does something only while its word is the first line, and takes that line off in its
/// own commit: so each mode happens exactly once, however often the boot starts again from its first step.

constexpr char kUpgradeMarker[] = "/config/kestrune-pending";
constexpr char kCommitRecord[] = "/config/kestrune-commit";

enum class RunStart {
    NothingToDo,
    WithoutMarker,
    OfUpgrade, ///< the marker's first line is this mode
};

/// Begins a run: waits for one that has not ended (at most 20 seconds), finishes one that was cut, and goes by the marker.
/// From here on changes are staged (fileReplacement.h).
///
/// @param mode  the mode word, any text
/// @return what is to be done now; after `NothingToDo` no run has begun
RunStart BeginRun(const char* mode);

/// @return whether this run has saved the file, be it with the bytes that it had
bool IsSavedByRun(const char* path);

/// Commits what was staged, and ends the run. When there is no room for all changes at once, they are made one after the
/// other, each whole, and removals last. What could not be saved goes to the system log, and stays as it was.
void CommitRun();
