// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// All changes of a run take effect as one step: after a kill or a power cut at any instant, the next run finds the
/// phone as it was before the run, or finishes the run.
///
/// Each run ends with one line in the system log, and nowhere else. It says what became of the run, without any value:
/// "mode all: 9 files changed, 1 not saved; ended early: translation table", "mode 2: nothing to do", "mode 1: not its turn"
/// (the marker lists another mode), "mode all: finished an earlier run". It is a warning if something failed.
///
/// | file                          | contents                                                                         |
/// | ----------------------------- | -------------------------------------------------------------------------------- |
/// | /config/kestrune-commit       | the commit record: the renames and removals; exists only during a commit         |
/// | /config/kestrune-certificates | the copies that are being made; exists only during a run                         |
/// | /config/kestrune-pending      | the upgrade's marker: the mode words that are still to run, one per line         |
///
/// While the marker exists, a mode does its work only if its word is the first line, and removes that line in its own
/// commit: so each mode takes effect exactly once, however often the boot starts again from its first step.

constexpr char kUpgradeMarker[] = "/config/kestrune-pending";
constexpr char kCommitRecord[] = "/config/kestrune-commit";

enum class RunStart {
    NothingToDo,
    WithoutMarker,
    OfUpgrade, ///< the marker's first line is this mode
};

/// Begins a run: waits for another run (at most 20 seconds), finishes an interrupted one, and acts on the marker. From
/// then on changes are staged (fileReplacement.h).
///
/// @param mode  the mode word, any text
/// @return what has to be done now; after `NothingToDo` no run has begun
[[nodiscard]] RunStart BeginRun(const char* mode);

/// @return whether this run has saved the file, even with unchanged bytes
bool IsSavedByRun(const char* path);

/// Commits the staged changes, and ends the run. If there is no space for all changes at once, they are made one after
/// the other, each whole, and removals last. Failures are reported to the system log; the files concerned are
/// unchanged.
///
/// @param endedEarly  the names of the passes that did not come to their end, for the system log; empty for none
void CommitRun(const std::string& endedEarly = std::string());
