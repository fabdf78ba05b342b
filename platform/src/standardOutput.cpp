// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "standardOutput.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <string>
#include <unistd.h>

#include "boundedOutput.h"
#include "descriptor.h"
#include "patience.h"

namespace
{

constexpr std::size_t kPieceSize = PIPE_BUF; // a writable pipe has room for this much

/// Static, because the limit applies to all reports of a run together.
Patience patience(10'000);

/// Opens the same file again, so that O_NONBLOCK does not affect other users of the descriptor.
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
    // Unlike a pipe, a terminal with little room blocks, unless it is opened with O_NONBLOCK.
    const Descriptor ours(isatty(descriptor) != 0 ? OpenAgain(descriptor) : -1);
    const int target = ours.IsOpen() ? ours.Number() : descriptor;
    while (!bytes.empty() && patience.WaitForRoom(target)) {
        const ssize_t count = write(target, bytes.data(), std::min(bytes.size(), kPieceSize));
        if (count < 0 && errno != EINTR && errno != EAGAIN)
            return;
        if (count > 0)
            bytes.remove_prefix(static_cast<std::size_t>(count));
        else if (!patience.WaitForSlice())
            return; // interrupted, or too little room
    }
}
