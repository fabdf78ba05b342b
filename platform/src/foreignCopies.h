// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// What a run does with the copies of foreignFiles.h at its start and in its commit.

/// Flushes the copies that this run has ended, and their folders.
void FlushForeignCopies();

/// Stages the removal of the note, if this run has made one, and forgets the copies.
void ForgetForeignCopies();

/// Removes what stands under the names of a note that a run without a commit has left, then the note.
void TakeBackForeignCopies();
