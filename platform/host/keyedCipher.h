// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <nettle/siv-cmac.h>
#include <optional>
#include <string>

/// The device's key.
constexpr char kCipherKeyFile[] = "/phone/factory/certs/pwcipher.key";

/// What the development key, which is public, may do on a phone without a key file. It always deciphers: what it once
/// enciphered would otherwise be lost to the phone.
enum class DevelopmentKey { MayEncipher, OnlyDeciphers };

/// The password cipher with the key of any file, for programs that examine a phone's files from outside.
/// `pw_data_encrypt` and `pw_data_decrypt` call this with the device's key.
class KeyedCipher
{
public:
    /// Called with the problem of a key file that is used nevertheless, and when the first text would be enciphered
    /// without one; each at most once.
    using Warn = void (*)(const std::string& text);

    /// @param keyFile  not copied; read when the first text needs the key
    explicit KeyedCipher(const char* keyFile, Warn warn = nullptr,
                         DevelopmentKey developmentKey = DevelopmentKey::MayEncipher)
        : keyFile_(keyFile), warn_(warn), developmentKey_(developmentKey)
    {
    }
    KeyedCipher(const KeyedCipher&) = delete;
    KeyedCipher& operator=(const KeyedCipher&) = delete;

    /// As `pw_data_encrypt`.
    int Encrypt(const char* text, char* output) const;

    /// As `pw_data_decrypt`.
    int Decrypt(const char* text, char* output) const;

private:
    struct KeySchedule {
        siv_cmac_aes256_ctx context;
        bool isUsable;
        bool isDevelopment;
    };
    const KeySchedule& Key() const;
    bool MayEncipher() const;

    const char* keyFile_;
    Warn warn_;
    DevelopmentKey developmentKey_;
    mutable bool isDevelopmentKeyWarnedOf_ = false;
    // Read once: the key never changes while a program runs, and every value of the table pass needs it.
    mutable std::optional<KeySchedule> key_;
};
