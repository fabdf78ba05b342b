// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <sys/types.h>

/// Descriptors, and what is read from and written to them. All are close-on-exec.

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

/// A look or a read that fails is made again until it has been tried this often.
constexpr int kMostTries = 3;

/// Opens a file that is no link, without waiting for a pipe or a device.
///
/// @return the descriptor; -1 on failure, with the reason in `errno` (ELOOP for a link)
int OpenForReading(const char* path);

/// Reads until the size is reached or the file ends before it.
///
/// @return how many bytes were read; -1 on failure
ssize_t ReadInto(int descriptor, char* bytes, std::size_t size);

/// Writes all bytes, however many calls it takes.
///
/// @return false when a write failed, with the reason in `errno`
bool WriteAll(int descriptor, std::string_view bytes);

/// @return the folder that holds the path's last name: "." for a bare name
std::string FolderOf(const std::string& path);

/// Flushes a folder's entries to the device. A folder that cannot be flushed is left to the system.
void FlushFolder(const char* path);
