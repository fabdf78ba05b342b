// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// An advisory lock on the folder "/config": it creates no file, and the kernel releases it with the process.

/// Waits for a run that has the lock, at most 20 seconds.
///
/// @return false if another run still has it. A folder that cannot be locked at all counts as locked.
[[nodiscard]] bool LockRuns();

void UnlockRuns();
