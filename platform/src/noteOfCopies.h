// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// What a run does with the copies of foreignCopies.h at its start and in its commit.

/// Flushes the copies that this run has ended, and their folders.
void FlushForeignCopies();

/// @return whether this run has made a note that is not removed yet
bool HasNoteOfCopies();

/// Removes the note, which belongs to a run that counts, and flushes its folder: from here on the copies stay.
///
/// @return false when it is still there
bool RemoveNoteOfCopies();

/// Removes the files that are listed in a note that a run without a commit has left, then the note.
///
/// @return false when there may be a note, but it cannot be read now
bool TakeBackForeignCopies();
