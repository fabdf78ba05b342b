// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string_view>

/// What a word of a name is; some words are several things.
enum WordKind : unsigned {
    kPart = 1 << 0,        ///< says nothing itself, but splits "adminpin"
    kSecret = 1 << 1,      ///< a secret wherever it is
    kLastSecret = 1 << 2,  ///< a secret as the last word: "Cookie", not "CookieDomain"
    kLooseSecret = 1 << 3, ///< a secret unless a word of another meaning follows: not "PassThrough"
    kOtherMeaning = 1 << 4,
    kBeforeKey = 1 << 5, ///< "ApiKey"
    kKey = 1 << 6,
    kBeforeCode = 1 << 7, ///< "UnlockCode"
    kCode = 1 << 8,
    kAboutSwitch = 1 << 9, ///< "EnablePin"
    kAboutSize = 1 << 10,  ///< "PinLength"
    kAboutKind = 1 << 11,  ///< "PasswordType"
};
constexpr unsigned kAbout = kAboutSwitch | kAboutSize | kAboutKind;

constexpr std::size_t kLongestSecretWord = 14;

/// @param word  in small letters
/// @return its kinds; 0 for a word that names of secrets do not have
unsigned KindOfWord(std::string_view word);
