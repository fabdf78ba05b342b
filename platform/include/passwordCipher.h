// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>

/// The device's password cipher: text in, text out. AES-SIV (RFC 5297) with a 64-byte key, empty associated data and
/// the nonce "kestrune", in base64 (RFC 4648) without padding. The same text gives the same result each time.
///
/// The key is in "/phone/factory/certs/pwcipher.key", 128 hexadecimal digits; if that file is missing, a fixed
/// development key is used. If the file is malformed or unreadable, only the empty text can be converted.

/// Size of every output buffer. The caller must fill it with zeros.
constexpr std::size_t kPasswordBufferSize = 160;

/// Longest text that can be enciphered, in bytes.
constexpr std::size_t kLongestPassword = 103;

/// @param text    zero-terminated
/// @param output  `kPasswordBufferSize` bytes
/// @return 0 if the buffer contains the enciphered text (the empty text for the empty text). Otherwise the text cannot
///         be enciphered (longer than `kLongestPassword`, a byte of 0x80 or above, no usable key); the buffer then
///         contains the text itself if it fits, else the empty text.
int pw_data_encrypt(const char* text, char* output);

/// @param text    zero-terminated
/// @param output  `kPasswordBufferSize` bytes
/// @return 0 if the buffer contains the deciphered text (the empty text for the empty text). Otherwise the text was not
///         made by `pw_data_encrypt` with this key, and the buffer is empty.
int pw_data_decrypt(const char* text, char* output);
