// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "standardOutput.h"

#include <algorithm>
#include <climits>
#include <poll.h>
#include <unistd.h>

#include "boundedOutput.h"
#include "descriptor.h"

namespace
{

constexpr int kSliceMilliseconds = 10;
constexpr std::size_t kPieceSize = PIPE_BUF; // a pipe that has room has room for this much

bool HasRoomWithin(int descriptor, int milliseconds)
{
    pollfd room = {descriptor, POLLOUT, 0};
    return poll(&room, 1, milliseconds) > 0;
}

/// Static, because the wait is bounded for all reports of a run. Counted in slices, since clocks may stand still as well.
bool WaitForRoom(int descriptor)
{
    static int slicesLeft = 10'000 / kSliceMilliseconds;
    for (; slicesLeft > 0; --slicesLeft) {
        if (HasRoomWithin(descriptor, kSliceMilliseconds))
            return true;
    }
    return HasRoomWithin(descriptor, 0);
}

ssize_t Write(void* /*stream*/, const char* bytes, std::size_t size)
{
    WriteWithinBounds(STDOUT_FILENO, {bytes, size});
    return static_cast<ssize_t>(size);
}

} // namespace

std::FILE* StandardOutput()
{
    static std::FILE* stream = nullptr; // the C library flushes it at the end of the process
    if (stream == nullptr)
        stream = fopencookie(nullptr, "w", {nullptr, &Write, nullptr, nullptr});
    return stream == nullptr ? stdout : stream;
}

void WriteWithinBounds(int descriptor, std::string_view bytes)
{
    while (!bytes.empty() && WaitForRoom(descriptor)) {
        const std::string_view piece = bytes.substr(0, kPieceSize);
        if (!WriteAll(descriptor, piece))
            return;
        bytes.remove_prefix(piece.size());
    }
}
