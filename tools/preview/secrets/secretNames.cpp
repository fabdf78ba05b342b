// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "secretNames.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <string>
#include <vector>

namespace
{

constexpr std::string_view kParts[] = {"password", "passwd", "pswd",  "passphrase", "passcode",    "passwort",
                                       "pincode",  "secret", "token", "credential", "keymaterial", "privatekey"};
constexpr std::string_view kEndings[] = {"pin", "pins", "pass", "pw", "pwd", "psk", "puk"};
constexpr std::string_view kKeyKinds[] = {"private", "priv",    "shared",     "api",    "auth",
                                          "access",  "encrypt", "encryption", "cipher", "master",
                                          "wep",     "wpa",     "aes",        "srtp",   "secret"};

bool IsUpper(char character)
{
    return std::isupper(static_cast<unsigned char>(character)) != 0;
}

bool IsLetter(char character)
{
    return std::isalpha(static_cast<unsigned char>(character)) != 0;
}

/// A word begins at a capital behind a small letter, at the last of several capitals before a small letter, and behind
/// anything that is no letter: "strWEPKey_2" has the words "str", "wep" and "key".
std::vector<std::string> WordsOf(std::string_view name)
{
    std::vector<std::string> words;
    bool isInWord = false;
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (!IsLetter(name[i])) {
            isInWord = false;
            continue;
        }
        const bool followsSmall = i > 0 && IsLetter(name[i - 1]) && !IsUpper(name[i - 1]);
        const bool beforeSmall = i + 1 < name.size() && IsLetter(name[i + 1]) && !IsUpper(name[i + 1]);
        if (!isInWord || (IsUpper(name[i]) && (followsSmall || beforeSmall)))
            words.emplace_back();
        words.back() += static_cast<char>(std::tolower(static_cast<unsigned char>(name[i])));
        isInWord = true;
    }
    return words;
}

template <typename List>
bool HoldsAny(const std::string& text, const List& parts)
{
    return std::any_of(std::begin(parts), std::end(parts),
                       [&text](std::string_view part) { return text.find(part) != std::string::npos; });
}

bool EndsInAny(const std::string& word)
{
    return std::any_of(std::begin(kEndings), std::end(kEndings), [&word](std::string_view ending) {
        return word.size() >= ending.size() && word.compare(word.size() - ending.size(), ending.size(), ending) == 0;
    });
}

bool IsKeyWord(std::string_view text)
{
    return std::any_of(std::begin(kKeyKinds), std::end(kKeyKinds), [text](std::string_view kind) {
        return text == std::string(kind) + "key" || text == std::string(kind) + "keys";
    });
}

} // namespace

bool IsSecretName(std::string_view name)
{
    const std::vector<std::string> words = WordsOf(name);
    std::string squeezed;
    for (const std::string& word : words)
        squeezed += word;
    if (HoldsAny(squeezed, kParts))
        return true;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (EndsInAny(words[i]) || IsKeyWord(words[i]) || (i + 1 < words.size() && IsKeyWord(words[i] + words[i + 1])))
            return true;
    }
    return false;
}

bool IsSecretValue(std::string_view name, std::string_view value)
{
    const bool isSwitch = name.size() > 1 && name[0] == 'b' && IsUpper(name[1]) && (value == "0" || value == "1");
    return !isSwitch && IsSecretName(name);
}
