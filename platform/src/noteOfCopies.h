// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// Handles the copies of foreignCopies.h at the start of a run and in its commit.

/// Flushes the copies that this run has made, and their folders.
///
/// @return how many there are
int FlushForeignCopies();

/// @return whether this run has written a note that is not removed yet
bool HasNoteOfCopies();

/// Removes the note of a committed run, and flushes its folder: from then on the copies stay.
///
/// @return false if it still exists
[[nodiscard]] bool RemoveNoteOfCopies();

/// Removes the files that are listed in the note of a run without a commit, then the note.
///
/// @return false if there may be a note, but it cannot be read now
[[nodiscard]] bool TakeBackForeignCopies();
