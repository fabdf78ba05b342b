// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The cipher key file: 128 hexadecimal digits. A phone with an unusable key file must not fall back on the development
// key, which protects nothing.

#include "cipherKey.h"

#include <cctype>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "phoneImage.h"

namespace
{

/// Bytes 0 to 63.
constexpr char kDigits[] = "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f"
                           "202122232425262728292a2b2c2d2e2f303132333435363738393a3b3c3d3e3f";

CipherKey CountingKey()
{
    CipherKey key = {};
    for (std::size_t n = 0; n < key.size(); ++n)
        key[n] = static_cast<std::uint8_t>(n);
    return key;
}

CipherKey FilledKey()
{
    CipherKey key = {};
    key.fill(0xA5);
    return key;
}

void ExpectMalformed(const std::string& path)
{
    CipherKey key = FilledKey();
    EXPECT_EQ(LoadCipherKey(path.c_str(), key), CipherKeyKind::Unusable);
    EXPECT_EQ(key, FilledKey());
}

std::string Replace(std::string text, const std::string& from, const std::string& to)
{
    return text.replace(text.find(from), from.size(), to);
}

/// A phone that has to encipher one plain secret and one that was enciphered with the development key.
void PutSecrets(PhoneImage& phone, const std::string& userLock, const std::string& factoryLock)
{
    phone.Put("/config/user/user.ini",
              "[PhoneSetting]\nEnLock=" + userLock +
                  "\n[Web]\nPlain=hello, phone\nSecret=NxCtIZlb8N+vWevKAOqtDvzgV0IboWX12AuHSQ\n"
                  "Empty=\n[Feature]\nRingbackTimeout=90\n");
    phone.Put("/phone/factory/user/user.ini", "[PhoneSetting]\nEnLock=" + factoryLock + "\n");
    phone.Put("/phone/resource/encryptconfig.xml",
              "<list><e file='/config/user/user.ini' section='Web' key='Plain'/>"
              "<e file='/config/user/user.ini' section='Web' key='Secret'/>"
              "<e file='/config/user/user.ini' section='Web' key='Empty'/></list>");
}

} // namespace

TEST(CipherKey, A128DigitFileIsTheKey)
{
    std::string upper = kDigits;
    for (char& digit : upper)
        digit = static_cast<char>(std::toupper(digit));
    const std::string blanks = " \t\n\r\v\f";
    std::string spaced = "\r\n";
    for (const char* digit = kDigits; *digit != '\0'; ++digit) {
        spaced += *digit;
        spaced += blanks[static_cast<std::size_t>(digit - kDigits) % blanks.size()];
    }
    const std::string texts[] = {kDigits, std::string(kDigits) + "\n", std::string(kDigits) + "\r\n\r\n", upper,
                                 spaced};
    for (const std::string& text : texts) {
        SCOPED_TRACE(text);
        const ScratchFolder folder;
        WriteBytes(folder.Path("key"), text);
        CipherKey key = FilledKey();
        EXPECT_EQ(LoadCipherKey(folder.Path("key").c_str(), key), CipherKeyKind::Own);
        EXPECT_EQ(key, CountingKey());
    }
}

TEST(CipherKey, WithoutAFileTheDevelopmentKeyIsUsed)
{
    const ScratchFolder folder;
    for (const char* name : {"missing", "missing/key"}) {
        CipherKey key = FilledKey();
        EXPECT_EQ(LoadCipherKey(folder.Path(name).c_str(), key), CipherKeyKind::Development);
        for (std::size_t n = 0; n < key.size(); ++n)
            EXPECT_EQ(key[n], (7 * n + 3) % 256) << n;
    }
}

TEST(CipherKey, AKeyThatOthersMayWriteIsWarnedOf)
{
    struct Row {
        mode_t mode;
        bool isWarnedOf;
    };
    const Row rows[] = {{0600, false}, {0400, false}, {0644, false}, {0755, false},
                        {0620, true},  {0602, true},  {0666, true},  {0662, true}};
    const ScratchFolder folder;
    const std::string path = folder.Path("key");
    WriteBytes(path, kDigits);
    for (const Row& row : rows) {
        ASSERT_EQ(chmod(path.c_str(), row.mode), 0);
        CipherKey key = FilledKey();
        std::string warning = "as it was";
        EXPECT_EQ(LoadCipherKey(path.c_str(), key, &warning), CipherKeyKind::Own);
        EXPECT_EQ(key, CountingKey()) << "it is used all the same";
        EXPECT_EQ(warning, row.isWarnedOf ? "others may write the cipher key " + path : "as it was")
            << std::oct << row.mode;
    }
}

TEST(CipherKey, AMalformedFileGivesNoKey)
{
    const std::string digits = kDigits;
    const std::string texts[] = {
        "",
        "\n",
        "0",
        digits.substr(1),
        digits.substr(2),
        digits + "0",
        digits + "00",
        digits + digits,
        digits + "\ng",
        digits + std::string(1, '\0'),
        Replace(digits, "0a", "0g"),
        Replace(digits, "0a", "-a"),
        Replace(digits, "0a", "\xC3\xA4"),
        Replace(digits, "00", "0x"),
        "0x" + digits,
        "\xEF\xBB\xBF" + digits,
        "# key\n" + digits,
        std::string(1, '\0') + digits,
    };
    for (const std::string& text : texts) {
        SCOPED_TRACE(text);
        const ScratchFolder folder;
        WriteBytes(folder.Path("key"), text);
        ExpectMalformed(folder.Path("key"));
    }
}

TEST(CipherKey, WhatIsNoRegularFileGivesNoKeyAndNeverBlocks)
{
    const ScratchFolder folder;
    ExpectMalformed(folder.Path());
    ASSERT_EQ(mkfifo(folder.Path("pipe").c_str(), 0600), 0);
    ExpectMalformed(folder.Path("pipe"));
}

TEST(CipherKey, ThePhonesOwnKeyEnciphers)
{
    PhoneImage phone;
    PutSecrets(phone, "0", "1");
    phone.Put("/phone/resource/encryptconfig.xml",
              "<list><e file='/config/user/user.ini' section='Web' key='Plain'/></list>");
    phone.Put("/phone/factory/certs/pwcipher.key", kDigits);
    phone.Run("pwd");
    phone.Expect("/config/user/user.ini", "[PhoneSetting]\nEnLock=0\n"
                                          "[Web]\nPlain=b+6Fw7CjnGbNEMQL7aMWDWn0Dt9xGNoS1vLP4Q\n"
                                          "Secret=NxCtIZlb8N+vWevKAOqtDvzgV0IboWX12AuHSQ\nEmpty=\n"
                                          "[Feature]\nRingbackTimeout=90\n");
    phone.ExpectNothingElseChanged();
}

TEST(CipherKey, WithAMalformedKeyThePasswordPassLeavesEverySecretAsItIs)
{
    using Lines = std::vector<std::string>;
    for (const bool isFolder : {false, true}) {
        PhoneImage phone;
        PutSecrets(phone, "0", "1");
        if (isFolder)
            phone.PutFolder("/phone/factory/certs/pwcipher.key");
        else
            phone.Put("/phone/factory/certs/pwcipher.key", "no key");
        phone.Run("pwd");
        phone.ExpectNothingElseChanged();
        EXPECT_EQ(phone.Reports(), (Lines{"etlTrace 2: Encrypt:(hello, phone)->(hello, phone)",
                                          "etlTrace 2: Encrypt:(NxCtIZlb8N+vWevKAOqtDvzgV0IboWX12AuHSQ)->"
                                          "(NxCtIZlb8N+vWevKAOqtDvzgV0IboWX12AuHSQ)"}));

        PutSecrets(phone, "1", "0");
        phone.Run("pwd");
        phone.ExpectNothingElseChanged();
        EXPECT_EQ(phone.Reports(), (Lines{"etlTrace 2: Decrypt:(hello, phone)->()",
                                          "etlTrace 2: Decrypt:(NxCtIZlb8N+vWevKAOqtDvzgV0IboWX12AuHSQ)->()"}));
    }
}

TEST(CipherKey, WithAMalformedKeyTheTablePassLeavesEverySecretAsItIs)
{
    PhoneImage phone;
    PutSecrets(phone, "1", "1");
    phone.Put("/config/version.ini", "[SyncConfig]\nbEnableFromOld=0\n");
    phone.Put("/phone/factory/certs/pwcipher.key", "no key");
    phone.Put("/phone/resource/kestrune.xml",
              "<t><r srcFile='/config/user/user.ini' srcSec='Web' srcKey='Plain' srcEncrypt='1'/>"
              "<r srcFile='/config/user/user.ini' srcSec='Web' srcKey='Secret' srcEncrypt='1'/>"
              "<r srcFile='/config/user/user.ini' srcSec='Web' srcKey='Secret'/></t>");
    phone.Run("dev");
    phone.ExpectNothingElseChanged();
}
