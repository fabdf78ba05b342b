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
/// @param key  gets the key; the fixed development key when the file is missing; as it was on failure
/// @param warning  gets what is wrong with a key that is used all the same: the file is missing, or others may write it; as
///                 it was otherwise; may be null
/// @return false when the file is there but malformed or unreadable
bool LoadCipherKey(const char* path, CipherKey& key, std::string* warning = nullptr);
