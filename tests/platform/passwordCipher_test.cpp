// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The contract of every password cipher: deciphering undoes enciphering, everything fits into the buffer, and a plain
// text can be distinguished from an enciphered one.

#include "passwordCipher.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace
{

struct Conversion {
    int result;
    std::string text;
};

using Cipher = int (*)(const char* text, char* output);

/// Calls the cipher with a zero-filled buffer of its exact size on the heap, where a sanitizer detects an overrun.
Conversion Convert(Cipher cipher, const std::string& text)
{
    const std::unique_ptr<char[]> buffer(new char[kPasswordBufferSize]());
    const int result = cipher(text.c_str(), buffer.get());
    EXPECT_NE(std::memchr(buffer.get(), '\0', kPasswordBufferSize), nullptr) << "no zero-terminated text: " << text;
    return {result, std::string(buffer.get(), strnlen(buffer.get(), kPasswordBufferSize))};
}

Conversion Encrypt(const std::string& text)
{
    return Convert(&pw_data_encrypt, text);
}

Conversion Decrypt(const std::string& text)
{
    return Convert(&pw_data_decrypt, text);
}

bool IsSevenBit(const std::string& text)
{
    return std::none_of(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0x80) != 0; });
}

const char* const kPasswords[] = {"a", "0000", "admin", "hello, phone", "Quayside-71!pelican", "key=value; [x] #1"};

} // namespace

TEST(PasswordCipher, APasswordIsEncipheredAndDeciphersToItself)
{
    for (const char* password : kPasswords) {
        const Conversion enciphered = Encrypt(password);
        EXPECT_EQ(enciphered.result, 0) << password;
        EXPECT_NE(enciphered.text, password);
        EXPECT_EQ(Decrypt(enciphered.text).result, 0) << password;
        EXPECT_EQ(Decrypt(enciphered.text).text, password);
    }
}

TEST(PasswordCipher, WhateverItEnciphersItDeciphers)
{
    for (std::size_t size = 0; size <= 400; ++size) {
        std::string text;
        for (std::size_t i = 0; i < size; ++i)
            text += static_cast<char>(1 + (i * 37 + size) % 255);
        const Conversion enciphered = Encrypt(text);
        if (enciphered.result != 0)
            continue;
        EXPECT_EQ(Decrypt(enciphered.text).result, 0) << size;
        EXPECT_EQ(Decrypt(enciphered.text).text, text) << size;
    }
}

TEST(PasswordCipher, AnEncipheredTextFitsALineOfAConfigurationFile)
{
    for (const char* password : kPasswords) {
        const std::string enciphered = Encrypt(password).text;
        EXPECT_EQ(enciphered.find_first_of("\r\n"), std::string::npos) << password;
        EXPECT_EQ(enciphered.find_first_of(" \t"), enciphered.empty() ? 0 : enciphered.find_first_of(" \t", 1))
            << "blanks that lead a value do not belong to it";
    }
}

TEST(PasswordCipher, APlainTextDoesNotDecipherToASevenBitText)
{
    for (const char* password : kPasswords) {
        const Conversion deciphered = Decrypt(password);
        EXPECT_TRUE(deciphered.result != 0 || !IsSevenBit(deciphered.text)) << password;
    }
    for (std::size_t size = 1; size <= 400; ++size) {
        const Conversion deciphered = Decrypt(std::string(size, 'A'));
        EXPECT_TRUE(deciphered.result != 0 || !IsSevenBit(deciphered.text)) << size;
    }
}
