// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <array>
#include <cstdint>
#include <string>

/// Two 256-bit AES keys: one for the synthetic IV, one for the text.
constexpr std::size_t kCipherKeySize = 64;
using CipherKey = std::array<std::uint8_t, kCipherKeySize>;

/// Reads the key file: 128 hexadecimal digits, white space ignored.
///
/// @param key  receives the key; the fixed development key if the file is missing; unchanged on failure
/// @param warning  receives the problem of a key that is used all the same: the file is missing, or other users may
///                 write to it; unchanged otherwise; may be null
/// @return false if the file exists but is malformed or unreadable
[[nodiscard]] bool LoadCipherKey(const char* path, CipherKey& key, std::string* warning = nullptr);
