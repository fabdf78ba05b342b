// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "passwordCipher.h"

#include "keyedCipher.h"
#include "systemLog.h"

namespace
{

#ifdef KESTRUNE_REFUSE_DEVELOPMENT_KEY
constexpr DevelopmentKey kDevelopmentKey = DevelopmentKey::OnlyDeciphers;
#else
constexpr DevelopmentKey kDevelopmentKey = DevelopmentKey::MayEncipher;
#endif

void WarnInSystemLog(const std::string& text)
{
    WriteToSystemLog(kSystemLogWarning, text);
}

/// Static, so that the key is read once per run.
const KeyedCipher& DeviceCipher()
{
    static const KeyedCipher cipher(kCipherKeyFile, &WarnInSystemLog, kDevelopmentKey);
    return cipher;
}

} // namespace

int pw_data_encrypt(const char* text, char* output)
{
    return DeviceCipher().Encrypt(text, output);
}

int pw_data_decrypt(const char* text, char* output)
{
    return DeviceCipher().Decrypt(text, output);
}
