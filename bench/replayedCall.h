// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

// Building blocks of the floors: see recordedCalls.py.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

/// Buffer of all reads and writes, with room for the largest benchmarked file.
inline char buffer[std::size_t{2} << 20];

inline void Expect(long result, long recorded)
{
    if (result != recorded)
        std::_Exit(1);
}

using SocketAddressBytes = std::array<char, 110>;

inline SocketAddressBytes SocketAddress(std::string_view path)
{
    SocketAddressBytes bytes = {AF_UNIX, 0};
    std::copy(path.begin(), path.end(), bytes.begin() + 2);
    return bytes;
}
