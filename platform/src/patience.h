// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// A limit on the total time of waiting for stalled readers. Counted in slices of 10 ms, since clocks may stop too.
class Patience
{
public:
    explicit constexpr Patience(int milliseconds) : slicesLeft_(milliseconds / kSliceMilliseconds) {}

    /// Waits until the descriptor has room for a write.
    ///
    /// @return false if it has none, and no time is left
    bool WaitForRoom(int descriptor);

    /// Waits for one slice.
    ///
    /// @return false if no time is left
    bool WaitForSlice();

private:
    static constexpr int kSliceMilliseconds = 10;

    int slicesLeft_;
};
