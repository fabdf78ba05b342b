// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The content of a file, by length and SHA-256 (FIPS 180-4), and whether a file on the device has it. These functions
/// ignore staged changes and follow no link.

struct ContentSum {
    std::uint64_t length = 0; ///< bytes
    std::string sha256;       ///< 64 hexadecimal digits, lower case; empty for a file that is too large to be read
};

/// No run writes a larger file. A larger file that is to be removed is identified by its length.
constexpr std::uint64_t kLargestContent = std::uint64_t{16} << 20;

ContentSum SumOf(std::string_view bytes);

/// @param sum  receives the sum of a regular file; meaningless otherwise
/// @return false if the path is not a regular file or cannot be read
[[nodiscard]] bool SumOfFile(const char* path, ContentSum& sum);

/// @return whether the path is a regular file with that content
bool HoldsContent(const char* path, const ContentSum& content);

/// @return whether the path is a regular file with these bytes; compares while reading, and allocates no memory
bool HoldsBytes(const char* path, std::string_view bytes);
