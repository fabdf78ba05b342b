// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "standardOutput.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <string>
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

/// Static, because the wait is bounded for all reports of a run. Counted in slices, since clocks may stop as well.
int slicesLeft = 10'000 / kSliceMilliseconds;

bool WaitForRoom(int descriptor)
{
    for (; slicesLeft > 0; --slicesLeft) {
        if (HasRoomWithin(descriptor, kSliceMilliseconds))
            return true;
    }
    return HasRoomWithin(descriptor, 0);
}

/// After a write that an interruption ended, or for which there was too little room.
///
/// @return false when there is no time left for another one
bool SpendSlice()
{
    constexpr timespec kSlice = {0, kSliceMilliseconds * 1'000'000};
    if (slicesLeft == 0)
        return false;
    --slicesLeft;
    (void)nanosleep(&kSlice, /*remaining=*/nullptr);
    return true;
}

/// A way of our own to the same file, so that O_NONBLOCK does not affect other users of the descriptor.
int OpenAgain(int descriptor)
{
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    return open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
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
    // Other than a pipe, a terminal with little room waits for more, unless it is opened for not waiting.
    const Descriptor ours(isatty(descriptor) != 0 ? OpenAgain(descriptor) : -1);
    const int target = ours.IsOpen() ? ours.Number() : descriptor;
    while (!bytes.empty() && WaitForRoom(target)) {
        const ssize_t count = write(target, bytes.data(), std::min(bytes.size(), kPieceSize));
        if (count < 0 && errno != EINTR && errno != EAGAIN)
            return;
        if (count > 0)
            bytes.remove_prefix(static_cast<std::size_t>(count));
        else if (!SpendSlice())
            return;
    }
}
