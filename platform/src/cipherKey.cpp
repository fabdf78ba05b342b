// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "cipherKey.h"

#include <cctype>
#include <cstring>

#include "fileBytes.h"

namespace
{

/// Used on developers' machines and on phones without a key of their own. It is public: it protects nothing.
CipherKey DevelopmentKey()
{
    CipherKey key = {};
    for (std::size_t n = 0; n < key.size(); ++n)
        key[n] = static_cast<std::uint8_t>(7 * n + 3);
    return key;
}

/// @return the digit's value; -1 for any other character
int HexDigit(char character)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    const auto lower = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    const char* digit = lower == '\0' ? nullptr : std::strchr(kDigits, lower);
    return digit == nullptr ? -1 : static_cast<int>(digit - kDigits);
}

bool ParseKey(const std::string& text, CipherKey& key)
{
    CipherKey parsed = {};
    std::size_t digits = 0;
    for (const char character : text) {
        if (std::isspace(static_cast<unsigned char>(character)) != 0)
            continue;
        const int digit = HexDigit(character);
        if (digit < 0 || digits == 2 * parsed.size())
            return false;
        std::uint8_t& byte = parsed[digits / 2];
        byte = static_cast<std::uint8_t>(byte << 4 | digit);
        ++digits;
    }
    if (digits != 2 * parsed.size())
        return false;
    key = parsed;
    return true;
}

} // namespace

CipherKeyKind LoadCipherKey(const char* path, CipherKey& key, std::string* warning)
{
    std::string text;
    struct stat status = {};
    switch (ReadFile(path, text, &status)) {
    case ReadResult::Missing:
        key = DevelopmentKey();
        return CipherKeyKind::Development;
    case ReadResult::Unreadable:
    case ReadResult::TooLarge:
        return CipherKeyKind::Unusable;
    case ReadResult::Done:
        break;
    }
    if (warning != nullptr && (status.st_mode & (S_IWGRP | S_IWOTH)) != 0)
        *warning = std::string("others may write the cipher key ") + path;
    return ParseKey(text, key) ? CipherKeyKind::Own : CipherKeyKind::Unusable;
}
