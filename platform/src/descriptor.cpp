// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "descriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace
{

constexpr int kMostInterruptions =
    8; // the program has no signal handlers, so a call that fails this often will not succeed

bool IsInterrupted(int& interruptions)
{
    return errno == EINTR && ++interruptions <= kMostInterruptions;
}

} // namespace

Descriptor::~Descriptor()
{
    if (IsOpen())
        (void)close(number_);
}

int OpenForReading(const char* path)
{
    int interruptions = 0;
    int number = -1;
    do
        number = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW | O_CLOEXEC);
    while (number == -1 && IsInterrupted(interruptions));
    return number;
}

ssize_t ReadInto(int descriptor, char* bytes, std::size_t size)
{
    int interruptions = 0;
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = read(descriptor, bytes + done, size - done);
        if (count < 0 && IsInterrupted(interruptions))
            continue;
        if (count < 0)
            return -1;
        if (count == 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    return static_cast<ssize_t>(done);
}

bool WriteAll(int descriptor, std::string_view bytes)
{
    int interruptions = 0;
    while (!bytes.empty()) {
        const ssize_t count = write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && IsInterrupted(interruptions))
            continue;
        if (count <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

std::string FolderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

void FlushFolder(const char* path)
{
    const Descriptor folder(open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.IsOpen())
        (void)fsync(folder.Number());
}
