// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// An advisory lock on the folder "/config" itself: nothing is made, and the kernel drops it with the process.

/// Waits for a run that has it, at most 20 seconds.
///
/// @return false when another run still has it. A folder that cannot be locked at all counts as locked.
bool LockRuns();

void UnlockRuns();
