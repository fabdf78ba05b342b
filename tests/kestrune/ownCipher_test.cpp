// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// How the program handles any result of a cipher, with the test's own cipher. The bundled one never returns most of
// these results, but another device's may.

#include <algorithm>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "convertPasswordValue.h"
#include "passwordCipher.h"
#include "scratchFolder.h"
#include "transPasswordFile.h"

namespace
{

/// The result of a call of the cipher.
struct Reply {
    int result = 0;
    const char* text = nullptr; // null: the buffer is not changed
};

/// The arguments of a call: the text, and the buffer before the call.
struct Call {
    std::string text;
    std::string buffer; // whole
};

bool operator==(const Call& one, const Call& other)
{
    return one.text == other.text && one.buffer == other.buffer;
}

void PrintTo(const Call& call, std::ostream* stream)
{
    *stream << call.text << " into " << testing::PrintToString(call.buffer);
}

Reply g_decrypt;
Reply g_encrypt;
std::vector<Call> g_decryptCalls;
std::vector<Call> g_encryptCalls;

int Answer(const Reply& reply, std::vector<Call>& calls, const char* text, char* output)
{
    calls.push_back({text, std::string(output, kPasswordBufferSize)});
    if (reply.text != nullptr)
        std::strcpy(output, reply.text);
    return reply.result;
}

} // namespace

// They replace those of the platform.
int pw_data_decrypt(const char* text, char* output)
{
    return Answer(g_decrypt, g_decryptCalls, text, output);
}

int pw_data_encrypt(const char* text, char* output)
{
    return Answer(g_encrypt, g_encryptCalls, text, output);
}

namespace
{

constexpr char kInput[] = "input";
const std::string kLong(200, 'l');

/// A buffer that contains this text and zeros after it.
std::string Buffer(const std::string& text = "")
{
    return text + std::string(kPasswordBufferSize - text.size(), '\0');
}

std::string Convert(const std::string& input, bool wantEnciphered, std::string& printed)
{
    g_decryptCalls.clear();
    g_encryptCalls.clear();
    std::string output = "what was there before";
    testing::internal::CaptureStdout();
    ConvertPasswordValue(&input, output, wantEnciphered);
    printed = testing::internal::GetCapturedStdout();
    return output;
}

/// A file with one value, which the password pass converts.
struct Pass {
    explicit Pass(const std::string& value) { WriteBytes(path, "[Web]\nA=" + value + "\n"); }

    int Run(CipherDirection direction)
    {
        g_decryptCalls.clear();
        g_encryptCalls.clear();
        testing::internal::CaptureStderr();
        const int result = TransEncryptValue(direction, path.c_str(), "Web", "A", "");
        traces = testing::internal::GetCapturedStderr();
        return result;
    }

    ScratchFolder folder;
    std::string path = folder.Path("web.ini");
    std::string traces;
};

} // namespace

TEST(OwnCipherConvertPasswordValue, WhatDeciphersToSevenBitsIsEncipheredAlreadyAndKept)
{
    for (const char* deciphered : {"", "plain", "\x7f\x01", "%s%n"}) {
        for (const std::string& input : {std::string(kInput), std::string(), kLong}) {
            SCOPED_TRACE(std::string(deciphered) + " of " + input);
            g_decrypt = {0, deciphered};
            g_encrypt = {0, "never"};
            std::string printed;
            EXPECT_EQ(Convert(input, /*wantEnciphered=*/true, printed), input);
            EXPECT_EQ(printed, "lpOutPassword=" + input.substr(0, kPasswordBufferSize - 1) + ", 0\n");
            EXPECT_THAT(g_decryptCalls, testing::ElementsAre(Call{input, Buffer()}));
            EXPECT_THAT(g_encryptCalls, testing::IsEmpty());
        }
    }
}

TEST(OwnCipherConvertPasswordValue, WhatDoesNotIsEncipheredIntoTheBufferAsTheFirstCallLeftIt)
{
    struct Row {
        const char* what;
        Reply decrypt;
        const char* left; // by the first call
        Reply encrypt;
        const char* output; // of the conversion
    };
    const Row rows[] = {
        {"a failure and an empty buffer", {1, ""}, "", {0, "token"}, "token"},
        {"a negative failure", {-1, ""}, "", {0, "token"}, "token"},
        {"a failure that leaves a text", {1, "left"}, "left", {0, "token"}, "token"},
        {"a first byte of 0x80", {0, "\x80plain"}, "\x80plain", {0, "token"}, "token"},
        {"a last byte of 0x80", {0, "plain\x80"}, "plain\x80", {0, "token"}, "token"},
        {"a byte of 0xff", {0, "pl\xff\x61in"}, "pl\xff\x61in", {0, "token"}, "token"},
        {"the second call leaves the buffer", {1, "left"}, "left", {0, nullptr}, "left"},
        {"the second call fails and leaves the buffer", {1, "left"}, "left", {1, nullptr}, "left"},
        {"the same with a byte of 0x80", {0, "l\x80"}, "l\x80", {-1, nullptr}, "l\x80"},
        {"the second call fails with a text", {1, ""}, "", {1, "kept"}, "kept"},
        {"the second call fails with an 8-bit text", {1, ""}, "", {1, "k\x80"}, "k\x80"},
        {"the second call gives an empty text", {1, "left"}, "left", {0, ""}, ""},
        {"the second call fails and empties the buffer", {1, "left"}, "left", {1, ""}, ""},
        {"neither call writes", {1, nullptr}, "", {1, nullptr}, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        g_decrypt = row.decrypt;
        g_encrypt = row.encrypt;
        std::string printed;
        EXPECT_EQ(Convert(kInput, /*wantEnciphered=*/true, printed), row.output);
        EXPECT_EQ(printed, std::string("lpOutPassword=") + row.output + ", 0\n");
        EXPECT_THAT(g_decryptCalls, testing::ElementsAre(Call{kInput, Buffer()}));
        EXPECT_THAT(g_encryptCalls, testing::ElementsAre(Call{kInput, Buffer(row.left)}));
    }
}

TEST(OwnCipherConvertPasswordValue, ThePlainFormIsWhatDeciphersToSevenBits)
{
    struct Row {
        const char* what;
        std::string input;
        Reply decrypt;
        std::string output;
        const char* printed;
    };
    const Row rows[] = {
        {"a text", kInput, {0, "plain"}, "plain", "lpOutPassword=plain, 0\n"},
        {"a text with 0x7f", kInput, {0, "\x7f"}, "\x7f", "lpOutPassword=\x7f, 0\n"},
        {"an empty text", kInput, {0, ""}, "", "lpOutPassword=, 0\n"},
        {"nothing is written", kInput, {0, nullptr}, "", "lpOutPassword=, 0\n"},
        {"a text out of nothing", "", {0, "plain"}, "plain", "lpOutPassword=plain, 0\n"},
        {"a first byte of 0x80", kInput, {0, "\x80plain"}, kInput, "lpOutPassword=\x80plain, -1\n"},
        {"a last byte of 0x80", kInput, {0, "plain\x80"}, kInput, "lpOutPassword=plain\x80, -1\n"},
        {"a byte of 0xff", kInput, {0, "\xff"}, kInput, "lpOutPassword=\xff, -1\n"},
        {"a failure", kInput, {1, ""}, kInput, "lpOutPassword=, -1\n"},
        {"a negative failure", kInput, {-1, nullptr}, kInput, "lpOutPassword=, -1\n"},
        {"a failure that leaves a text", kInput, {2, "left"}, kInput, "lpOutPassword=left, -1\n"},
        {"a failure of a long text", kLong, {1, "left"}, kLong, "lpOutPassword=left, -1\n"},
        {"a failure of nothing", "", {1, "left"}, "", "lpOutPassword=left, -1\n"},
        {"eight bits out of nothing", "", {0, "\x80"}, "", "lpOutPassword=\x80, -1\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        g_decrypt = row.decrypt;
        g_encrypt = {0, "never"};
        std::string printed;
        EXPECT_EQ(Convert(row.input, /*wantEnciphered=*/false, printed), row.output);
        EXPECT_EQ(printed, row.printed);
        EXPECT_THAT(g_decryptCalls, testing::ElementsAre(Call{row.input, Buffer()}));
        EXPECT_THAT(g_encryptCalls, testing::IsEmpty());
    }
}

TEST(OwnCipherTransEncryptValue, TheResultOfTheCipherAloneDecidesWhetherTheKeyIsSet)
{
    struct Row {
        const char* what;
        Reply reply;
        const char* stored; // afterwards
        const char* traced;
    };
    const Row rows[] = {
        {"a text", {0, "made"}, "made", "made"},
        {"an empty text", {0, ""}, "", ""},
        {"nothing is written", {0, nullptr}, "", ""},
        {"an 8-bit text", {0, "m\x80"}, "m\x80", "m\x80"},
        {"a failure with a text", {1, "left"}, kInput, "left"},
        {"a negative failure", {-1, ""}, kInput, ""},
    };
    for (const Row& row : rows) {
        for (const CipherDirection direction : {CipherDirection::Encipher, CipherDirection::Decipher}) {
            const bool isEncipher = direction == CipherDirection::Encipher;
            SCOPED_TRACE(std::string(row.what) + (isEncipher ? ", enciphering" : ", deciphering"));
            const Reply unused = {0, "never"};
            g_encrypt = isEncipher ? row.reply : unused;
            g_decrypt = isEncipher ? unused : row.reply;
            Pass pass(kInput);
            EXPECT_EQ(pass.Run(direction), 1);
            EXPECT_EQ(ReadBytes(pass.path), std::string("[Web]\nA=") + row.stored + "\n");
            EXPECT_EQ(pass.traces, std::string(isEncipher ? "etlTrace 2: Encrypt:(" : "etlTrace 2: Decrypt:(") +
                                       kInput + ")->(" + row.traced + ")\n");
            EXPECT_THAT(isEncipher ? g_encryptCalls : g_decryptCalls, testing::ElementsAre(Call{kInput, Buffer()}));
            EXPECT_THAT(isEncipher ? g_decryptCalls : g_encryptCalls, testing::IsEmpty());
        }
    }
}

TEST(OwnCipherTransEncryptValue, TheCipherGetsAtMost159CharactersAndNeverNone)
{
    g_encrypt = {0, "made"};
    for (const std::size_t length : {158u, 159u, 160u, 5000u}) {
        SCOPED_TRACE(length);
        Pass pass(std::string(length, 'x'));
        EXPECT_EQ(pass.Run(CipherDirection::Encipher), 1);
        EXPECT_THAT(g_encryptCalls,
                    testing::ElementsAre(Call{std::string(std::min<std::size_t>(length, 159), 'x'), Buffer()}));
        EXPECT_EQ(ReadBytes(pass.path), "[Web]\nA=made\n");
    }
    Pass empty("");
    EXPECT_EQ(empty.Run(CipherDirection::Encipher), 1);
    EXPECT_THAT(g_encryptCalls, testing::IsEmpty());
    EXPECT_EQ(empty.traces, "");
    EXPECT_EQ(ReadBytes(empty.path), "[Web]\nA=\n");
}
