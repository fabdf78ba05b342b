// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "patience.h"

#include <ctime>
#include <poll.h>

namespace
{

bool HasRoomWithin(int descriptor, int milliseconds)
{
    pollfd room = {descriptor, POLLOUT, 0};
    return poll(&room, 1, milliseconds) > 0;
}

} // namespace

bool Patience::WaitForRoom(int descriptor)
{
    for (; slicesLeft_ > 0; --slicesLeft_) {
        if (HasRoomWithin(descriptor, kSliceMilliseconds))
            return true;
    }
    return HasRoomWithin(descriptor, 0);
}

bool Patience::WaitForSlice()
{
    constexpr timespec kSlice = {0, kSliceMilliseconds * 1'000'000};
    if (slicesLeft_ <= 0)
        return false;
    --slicesLeft_;
    (void)nanosleep(&kSlice, /*remaining=*/nullptr);
    return true;
}
