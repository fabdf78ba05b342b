// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <nettle/siv-cmac.h>
#include <optional>
#include <string>

/// The password cipher with the key of any file, for programs that look at a phone's files from outside;
/// `pw_data_encrypt` and `pw_data_decrypt` are this with the device's.
class KeyedCipher
{
public:
    /// Called once with what is wrong with a key that is used nevertheless.
    using Warn = void (*)(const std::string& text);

    /// @param keyFile  kept by address; read at the first text that needs the key, and only then
    explicit KeyedCipher(const char* keyFile, Warn warn = nullptr) : keyFile_(keyFile), warn_(warn) {}
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
    };
    const KeySchedule& Key() const;

    const char* keyFile_;
    Warn warn_;
    // Made once: the key never changes while a program runs, and every value of the table pass asks for it.
    mutable std::optional<KeySchedule> key_;
};
