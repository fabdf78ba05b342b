// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// What a file holds, by length and SHA-256 (FIPS 180-4), and whether a file on the device holds it. All of this is past
/// the stage, and follows no link.

struct ContentSum {
    std::uint64_t length = 0; ///< bytes
    std::string sha256;       ///< 64 hexadecimal digits, lower case; empty for a file that is too large to be read
};

/// No run makes a larger file. One that is to be removed is known by its length.
constexpr std::uint64_t kLargestContent = std::uint64_t{16} << 20;

ContentSum SumOf(std::string_view bytes);

/// @param sum  gets the sum of a regular file; of no meaning otherwise
/// @return false when the path is no regular file or cannot be read
bool SumOfFile(const char* path, ContentSum& sum);

/// @return whether the path is a regular file with that content
bool HoldsContent(const char* path, const ContentSum& content);

/// @return whether the path is a regular file with these bytes; compares as it reads, and needs no memory
bool HoldsBytes(const char* path, std::string_view bytes);
