// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <sys/types.h>

/// Descriptors, and functions that read from and write to them. All are close-on-exec.

/// Owns a descriptor and closes it.
class Descriptor
{
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor();
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool IsOpen() const { return number_ >= 0; }
    int Number() const { return number_; }

private:
    int number_;
};

/// A failing lookup or read is tried this many times.
constexpr int kMostTries = 3;

/// Opens a file that is not a link, without waiting for a pipe or a device.
///
/// @return the descriptor; -1 on failure, with the reason in `errno` (ELOOP for a link)
[[nodiscard]] int OpenForReading(const char* path);

/// Reads until the size or the end of the file is reached.
///
/// @return the number of bytes that were read; -1 on failure
ssize_t ReadInto(int descriptor, char* bytes, std::size_t size);

/// Writes all bytes, in as many calls as necessary.
///
/// @return false if a write failed, with the reason in `errno`
[[nodiscard]] bool WriteAll(int descriptor, std::string_view bytes);

/// @return the folder that contains the path's last name: "." for a bare name
std::string FolderOf(const std::string& path);

/// Flushes a folder's entries to the device. Failures are ignored: the system writes the folder later.
void FlushFolder(const char* path);
