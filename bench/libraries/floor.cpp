// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// No library: the bare open, read and close of the file, and a copy of its bytes. This is the minimum for any library.

#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include "iniLibrary.h"
#include "scratchFolder.h"

namespace
{

struct Bytes {
    std::unique_ptr<char[]> begin;
    std::size_t size;
};

Bytes Read(const char* path)
{
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    struct stat status = {};
    Require(file != -1 && fstat(file, &status) == 0, "open");
    const auto size = static_cast<std::size_t>(status.st_size);
    Bytes bytes = {std::unique_ptr<char[]>(new char[size]), size}; // not zeroed first
    Require(read(file, bytes.begin.get(), size) == status.st_size, "read");
    (void)close(file); // only read
    return bytes;
}

} // namespace

std::string iniLibrary::Get(const char* path, const char* /*section*/, const char* /*key*/)
{
    const Bytes bytes = Read(path);
    benchmark::DoNotOptimize(bytes.begin.get());
    return std::string();
}

const bool iniLibrary::kCanWrite = true;

std::string iniLibrary::SetInMemory(const char* path, const char* /*section*/, const char* /*key*/,
                                    const char* /*value*/)
{
    const Bytes bytes = Read(path);
    return std::string(bytes.begin.get(), bytes.size);
}
