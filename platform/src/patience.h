// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// How long a stalled reader is waited for, in all waits together. Counted in slices of 10 ms, since clocks may stop as
/// well.
class Patience
{
public:
    explicit constexpr Patience(int milliseconds) : slicesLeft_(milliseconds / kSliceMilliseconds) {}

    /// Waits until the descriptor has room for a write.
    ///
    /// @return false when it has none, and no time is left
    bool WaitForRoom(int descriptor);

    /// Waits for one slice.
    ///
    /// @return false when no time is left
    bool WaitForSlice();

private:
    static constexpr int kSliceMilliseconds = 10;

    int slicesLeft_;
};
