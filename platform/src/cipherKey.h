// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <array>
#include <cstdint>
#include <string>

/// Two 256-bit AES keys: one for the synthetic IV, one for the text.
constexpr std::size_t kCipherKeySize = 64;
using CipherKey = std::array<std::uint8_t, kCipherKeySize>;

enum class CipherKeyKind {
    Unusable,    ///< the file exists but is malformed or unreadable
    Development, ///< there is no file: the fixed development key, which is public
    Own,         ///< that of the file
};

/// Reads the key file: 128 hexadecimal digits, white space ignored.
///
/// @param key      receives the key; unchanged if it is unusable
/// @param warning  receives the problem of a file that is used nevertheless: other users may write to it; unchanged
///                 otherwise; may be null
[[nodiscard]] CipherKeyKind LoadCipherKey(const char* path, CipherKey& key, std::string* warning = nullptr);
