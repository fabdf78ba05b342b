// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>

/// The device's password cipher: text in, text out. AES-SIV (RFC 5297) with a 64-byte key, empty associated data and
/// the nonce "kestrune", in base64 (RFC 4648) without padding. The same text gives the same result each time.
///
/// The key is "/phone/factory/certs/pwcipher.key", 128 hexadecimal digits; a fixed development key when that file is
/// missing. With a file that is there but malformed or unreadable no text but the empty one is converted.

/// Size of every output buffer. The caller hands it zero-filled.
constexpr std::size_t kPasswordBufferSize = 160;

/// Longest text that can be enciphered, in bytes.
constexpr std::size_t kLongestPassword = 103;

/// @param text    zero-terminated
/// @param output  `kPasswordBufferSize` bytes
/// @return 0: the buffer holds the enciphered text (the empty text for the empty text). Otherwise the text cannot be
///         enciphered (longer than `kLongestPassword`, a byte of 0x80 or above, no usable key); the buffer then holds
///         the text itself when it fits, else the empty text.
int pw_data_encrypt(const char* text, char* output);

/// @param text    zero-terminated
/// @param output  `kPasswordBufferSize` bytes
/// @return 0: the buffer holds the deciphered text (the empty text for the empty text). Otherwise the text is none that
///         `pw_data_encrypt` made with this key, and the buffer is empty.
int pw_data_decrypt(const char* text, char* output);
