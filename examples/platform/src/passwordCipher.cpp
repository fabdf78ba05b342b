// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// THIS CIPHER PROTECTS NOTHING: each byte becomes two hexadecimal digits after a word that marks the form. It shows
// what a cipher has to do for its callers; a device calls its own cipher here.

#include "passwordCipher.h"

#include <cstring>
#include <string>
#include <string_view>

namespace
{

constexpr std::string_view kWord = "unprotected:";
constexpr std::string_view kDigits = "0123456789abcdef";

/// @return false if the text does not fit; the buffer then contains the empty text
bool Give(std::string_view text, char* output)
{
    const bool fits = text.size() < kPasswordBufferSize;
    const std::size_t size = fits ? text.size() : 0;
    std::memcpy(output, text.data(), size);
    output[size] = '\0';
    return fits;
}

} // namespace

int pw_data_encrypt(const char* text, char* output)
{
    const std::string_view plain = text;
    if (plain.empty())
        return Give("", output) ? 0 : 1;
    std::string enciphered(kWord);
    for (const char c : plain) {
        const auto byte = static_cast<unsigned char>(c);
        enciphered += kDigits[byte >> 4];
        enciphered += kDigits[byte & 15];
        if (byte >= 0x80 || enciphered.size() >= kPasswordBufferSize) { // it would look like a plain text
            (void)Give(plain, output);
            return 1;
        }
    }
    return Give(enciphered, output) ? 0 : 1;
}

int pw_data_decrypt(const char* text, char* output)
{
    (void)Give("", output);
    std::string_view enciphered = text;
    if (enciphered.empty())
        return 0;
    if (enciphered.substr(0, kWord.size()) != kWord)
        return 1;
    enciphered.remove_prefix(kWord.size());
    if (enciphered.empty() || enciphered.size() % 2 != 0)
        return 1;

    std::string plain;
    for (std::size_t i = 0; i < enciphered.size(); i += 2) {
        const std::size_t high = kDigits.find(enciphered[i]);
        const std::size_t low = kDigits.find(enciphered[i + 1]);
        if (high >= 8 || low == kDigits.npos || high + low == 0) // not 7-bit, not a digit, or a zero byte
            return 1;
        plain += static_cast<char>(high << 4 | low);
    }
    return Give(plain, output) ? 0 : 1;
}
