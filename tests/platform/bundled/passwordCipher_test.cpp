// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The cipher, compared with vectors of another implementation, and the properties on which its callers rely:
// deciphering undoes enciphering, and only a token of this key can be deciphered. The machine that runs these tests has
// no key file, so the development key is used.

#include "passwordCipher.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace
{

constexpr char kHello[] = "hello, phone";
constexpr char kHelloToken[] = "NxCtIZlb8N+vWevKAOqtDvzgV0IboWX12AuHSQ";

struct Conversion {
    int result;
    std::string text;
};

using Cipher = int (*)(const char* text, char* output);

/// Calls the cipher with a buffer of its exact size on the heap, where a sanitizer detects an overrun.
Conversion Convert(Cipher cipher, const std::string& text, char fill = '\0')
{
    const std::unique_ptr<char[]> buffer(new char[kPasswordBufferSize]);
    std::fill_n(buffer.get(), kPasswordBufferSize, fill);
    const int result = cipher(text.c_str(), buffer.get());
    return {result, std::string(buffer.get(), strnlen(buffer.get(), kPasswordBufferSize))};
}

Conversion Encrypt(const std::string& text)
{
    return Convert(&pw_data_encrypt, text);
}

/// The buffer is filled: a failure has to empty it.
Conversion Decrypt(const std::string& text)
{
    return Convert(&pw_data_decrypt, text, '#');
}

void ExpectNoToken(const std::string& text)
{
    const Conversion plain = Decrypt(text);
    EXPECT_NE(plain.result, 0) << "\"" << text << "\" deciphers";
    EXPECT_EQ(plain.text, "") << "\"" << text << "\"";
}

/// A text of 7-bit bytes, none of them zero, that differs with its size.
std::string TextOf(std::size_t size)
{
    std::string text;
    for (std::size_t i = 0; i < size; ++i)
        text += static_cast<char>(1 + (i * 37 + size) % 127);
    return text;
}

} // namespace

TEST(BundledPasswordCipher, TextsBecomeTheTokensThatTheAlgorithmGives)
{
    struct Row {
        std::string text;
        const char* token;
    };
    const Row rows[] = {
        {kHello, kHelloToken},
        {"a", "OWOyiHU9xaqhqGk4gLL2YOw"},
        {"0123456789abcdef", "BXx5PAHVjzuIN8xAbJQJiLhZtQib0biXkfW1dWInupU"},
        {"The quick brown fox jumps over 13 lazy dogs; key=value #1!",
         "3sHja2HFWn3OSpGlr3xFxE29kO/aaPsBsMqkl7vFyH2ZCInYPsDVEUtYHAlvWnqBUt1oM97KtCRcloCdP0YST1AHqPraq+9stOI"},
        {std::string(103, 'x'),
         "q3CVjm9u+cSPKkl9psxtiBqsYliH3bjctUkRauPre4vBxdNajVCpttwwM1byv8qaipz7srLb1c+l9NhIYinx2DT3"
         "TRO7HNPeWC10UXzGmsbKQNujIMwVfNiIEMLEvXZXugGjaeMtWRxPgU1PtucqyEXkJj1Rglk"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(Encrypt(row.text).result, 0);
        EXPECT_EQ(Encrypt(row.text).text, row.token);
        EXPECT_EQ(Decrypt(row.token).result, 0);
        EXPECT_EQ(Decrypt(row.token).text, row.text);
    }
}

TEST(BundledPasswordCipher, TheEmptyTextStaysEmptyBothWays)
{
    EXPECT_EQ(Convert(&pw_data_encrypt, "", '#').result, 0);
    EXPECT_EQ(Convert(&pw_data_encrypt, "", '#').text, "");
    EXPECT_EQ(Decrypt("").result, 0);
    EXPECT_EQ(Decrypt("").text, "");
}

TEST(BundledPasswordCipher, DecipheringUndoesEncipheringUpTo103BytesAndLongerTextsAreLeftAlone)
{
    for (std::size_t size = 1; size <= 200; ++size) {
        SCOPED_TRACE(size);
        const std::string text = TextOf(size);
        const Conversion token = Encrypt(text);
        if (size <= 103) {
            EXPECT_EQ(token.result, 0);
            EXPECT_NE(token.text, text);
            EXPECT_EQ(token.text.size(), ((size + 16) * 8 + 5) / 6);
            EXPECT_EQ(Decrypt(token.text).result, 0);
            EXPECT_EQ(Decrypt(token.text).text, text);
        } else {
            EXPECT_NE(token.result, 0);
            EXPECT_EQ(token.text, size <= 159 ? text : "");
        }
    }
}

TEST(BundledPasswordCipher, EverySevenBitByteButZeroCanBeEnciphered)
{
    for (int byte = 1; byte < 0x80; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        EXPECT_EQ(Decrypt(Encrypt(text).text).text, text) << byte;
    }
}

TEST(BundledPasswordCipher, ATextWithAnEightBitByteIsLeftAlone)
{
    for (int byte = 0x80; byte <= 0xFF; ++byte) {
        const std::string text = std::string("pass") + static_cast<char>(byte) + "word";
        EXPECT_NE(Encrypt(text).result, 0) << byte;
        EXPECT_EQ(Encrypt(text).text, text) << byte;
    }
    for (const std::size_t size : {1u, 103u, 104u, 159u, 160u, 200u}) {
        SCOPED_TRACE(size);
        for (const std::size_t position : {std::size_t{0}, size / 2, size - 1}) {
            std::string text(size, 'x');
            text[position] = '\x80';
            EXPECT_NE(Encrypt(text).result, 0);
            EXPECT_EQ(Encrypt(text).text, size <= 159 ? text : "");
        }
    }
}

TEST(BundledPasswordCipher, TheSameTextGivesTheSameTokenEveryTime)
{
    EXPECT_EQ(Encrypt(kHello).text, Encrypt(kHello).text);
    EXPECT_NE(Encrypt("hello, phone").text, Encrypt("hello, phonE").text);
}

TEST(BundledPasswordCipher, WhatTheBufferHeldBeforeDoesNotMatter)
{
    EXPECT_EQ(Convert(&pw_data_encrypt, kHello, '#').text, kHelloToken);
    EXPECT_EQ(Convert(&pw_data_encrypt, std::string(159, 'x'), '#').text, std::string(159, 'x'));
    EXPECT_EQ(Convert(&pw_data_encrypt, std::string(160, 'x'), '#').text, "");
}

TEST(BundledPasswordCipher, ATokenIsItselfATextThatCanBeEnciphered)
{
    const std::string twice = Encrypt(kHelloToken).text;
    EXPECT_EQ(twice, "eB/ZoLFj99qSyKAwH8JR7eNnWv3kbcCmx2/I3cTGSAnRkfusBHgw97AUlepoVCJgcNKXnzHB");
    EXPECT_EQ(Decrypt(twice).text, kHelloToken);
}

TEST(BundledPasswordCipher, PlainTextsNeverDecipher)
{
    const std::string texts[] = {"a",
                                 "0000",
                                 "admin",
                                 "1234567890",
                                 "Quayside-71!pelican",
                                 "AAAAAAAAAAAAAAAAAAAAAA",
                                 "AAAAAAAAAAAAAAAAAAAAAAA",
                                 "thisLooksLikeBase64Text0123456789+/ab",
                                 "http://example.com/a?b=c",
                                 "pass\xC3\xBCword",
                                 "\xFF\xFE",
                                 " ",
                                 "\n",
                                 "="};
    for (const std::string& text : texts)
        ExpectNoToken(text);
    for (std::size_t size = 1; size <= 400; ++size) {
        ExpectNoToken(std::string(size, 'A'));
        ExpectNoToken(TextOf(size));
    }
    ExpectNoToken(std::string(1000000, 'A'));
}

TEST(BundledPasswordCipher, ATokenWithAnyOtherCharacterAnywhereDoesNotDecipher)
{
    const std::string token = kHelloToken;
    ASSERT_EQ(Decrypt(token).result, 0);
    for (std::size_t position = 0; position < token.size(); ++position) {
        for (int byte = 0; byte <= 0xFF; ++byte) { // a zero byte ends the token
            std::string altered = token;
            altered[position] = static_cast<char>(byte);
            if (altered != token && !(position == 0 && byte == 0))
                ExpectNoToken(altered);
        }
    }
}

TEST(BundledPasswordCipher, ATokenWithACharacterMoreOrLessDoesNotDecipher)
{
    const std::string token = kHelloToken;
    for (std::size_t position = 0; position <= token.size(); ++position) {
        for (const char* inserted : {" ", "\t", "\n", "\r", "\r\n", "\v", "\f", "=", "A", "-", "_", "\x80"})
            ExpectNoToken(std::string(token).insert(position, inserted));
        if (position < token.size())
            ExpectNoToken(std::string(token).erase(position, 1));
        if (position > 0 && position < token.size())
            ExpectNoToken(token.substr(0, position));
    }
}

TEST(BundledPasswordCipher, PaddingDoesNotDecipher)
{
    for (const char* text : {"a", "ab", "abc", kHello}) {
        for (const char* padding : {"=", "==", "===", "====", "= ", " ="})
            ExpectNoToken(Encrypt(text).text + padding);
    }
}

TEST(BundledPasswordCipher, StrayLowBitsInTheLastCharacterDoNotDecipher)
{
    // 17 bytes end in a group of three characters whose last one carries two unused bits; 18 bytes leave none of them;
    // 19 bytes end in a group of two with four unused bits.
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (const char* text : {"a", "ab", "abc", "abcd"}) {
        const std::string token = Encrypt(text).text;
        const std::size_t unusedBits = token.size() * 6 % 8;
        const std::size_t last = alphabet.find(token.back());
        ASSERT_NE(last, std::string::npos);
        EXPECT_EQ(last & ((1u << unusedBits) - 1), 0u) << token;
        for (std::size_t stray = 1; stray < 1u << unusedBits; ++stray)
            ExpectNoToken(token.substr(0, token.size() - 1) + alphabet[last | stray]);
    }
}

TEST(BundledPasswordCipher, TokensOfOtherMakersDoNotDecipher)
{
    // Made by another implementation with the same key, but never by the cipher itself.
    struct Row {
        const char* what;
        const char* token;
    };
    const Row rows[] = {
        {"the empty text", "6neBoF1/GPlgbXA+a98TcQ"},
        {"a 0x80 byte", "LxHB29DNLK0pqocX85HM6VyTAg"},
        {"a zero byte", "XsnWPiSjf+fJD8HUS4MXMt7etg"},
        {"104 bytes", "w/HGweSpkES9gvQUz74OXa3KZevLaGWXKTiLLe3sUzcl53oNBajr3bq9vNirJG2rNRhCFi2sVsXuhba0pZy05GOyoOts/DX+"
                      "EGAQxo7dZiEIfjKjtC8daboqOycY/+kal707wCE7eVSd7lzBjm9CTcDnnVgKV8/H"},
        {"no nonce", "0gfhZIlK3iyNoNHWaIItFgDZfPLEjdCjPRAdqw"},
        {"no associated data", "nuzPFUQj7Ais+Al+7IYX01hB9SUYq5Vg82WRHg"},
        {"another key", "b+6Fw7CjnGbNEMQL7aMWDWn0Dt9xGNoS1vLP4Q"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        ExpectNoToken(row.token);
    }
}
