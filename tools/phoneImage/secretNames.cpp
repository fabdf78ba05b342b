// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "secretNames.h"

#include <algorithm>
#include <cctype>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include "secretWords.h"

namespace
{

constexpr std::size_t kLongestRun = 64; ///< no name of a phone has a longer one

/// In a run of small letters that is not made of known words. No other word has them in it.
constexpr std::string_view kUnmistakable[] = {"passcode", "passphrase", "passwd",     "password",
                                              "passwort", "pswd",       "credential", "privatekey"};
constexpr std::string_view kUnmistakableEnds[] = {"secret", "secrets", "token", "tokens"};

bool IsUpper(char character)
{
    return character >= 'A' && character <= 'Z';
}

bool IsLower(char character)
{
    return character >= 'a' && character <= 'z';
}

bool IsDigit(char character)
{
    return character >= '0' && character <= '9';
}

std::string ToLower(std::string_view text)
{
    std::string lower(text);
    for (char& character : lower)
        character = IsUpper(character) ? static_cast<char>(character - 'A' + 'a') : character;
    return lower;
}

/// Splits a run of small letters into known words, as "sippassword".
///
/// @param kinds  gets what the words are; stays as it is when the run has another part
bool SplitRun(std::string_view run, std::vector<unsigned>& kinds)
{
    const std::size_t count = kinds.size();
    for (std::size_t size = std::min(run.size(), kLongestSecretWord); size > 1; --size) {
        const unsigned kind = KindOfWord(run.substr(0, size));
        const bool isStray = kind == kOtherMeaning && (kinds.empty() || (kinds.back() & kLooseSecret) == 0); // "bypass"
        if (kind == 0 || isStray)
            continue;
        kinds.push_back(kind);
        if (size == run.size() || SplitRun(run.substr(size), kinds))
            return true;
        kinds.resize(count);
    }
    return false;
}

/// What the words in a run of small letters are; a run that is not made of known words counts as one word.
void AddRun(std::string_view run, std::vector<unsigned>& kinds)
{
    if (run.size() <= kLongestRun && SplitRun(run, kinds))
        return;
    const bool isSecret =
        std::any_of(std::begin(kUnmistakable), std::end(kUnmistakable),
                    [run](std::string_view part) { return run.find(part) != std::string_view::npos; }) ||
        std::any_of(std::begin(kUnmistakableEnds), std::end(kUnmistakableEnds),
                    [run](std::string_view end) { return run.ends_with(end); });
    kinds.push_back(isSecret ? kSecret : 0U);
}

/// A word begins at a capital after a small letter, at the last of several capitals before a small letter, and after a
/// digit or separator: "strWEPKey_2" has the words "str", "WEP" and "Key".
std::vector<unsigned> KindsOfWords(std::string_view name)
{
    const std::string lower = ToLower(name);
    std::vector<unsigned> kinds;
    for (std::size_t at = 0; at < name.size();) {
        if (!IsLower(lower[at])) {
            ++at;
            continue;
        }
        std::size_t end = at + 1;
        for (; end < name.size() && IsLower(lower[end]); ++end) {
            const bool beforeSmall = end + 1 < name.size() && IsLower(name[end + 1]);
            if (IsUpper(name[end]) && (IsLower(name[end - 1]) || beforeSmall))
                break;
        }
        std::size_t digits = end;
        while (digits < name.size() && IsDigit(name[digits]))
            ++digits;
        const std::string_view run = std::string_view(lower).substr(at, end - at);
        const std::string_view withDigits = std::string_view(lower).substr(at, digits - at);
        if (digits != end && KindOfWord(withDigits) != 0) // "HA1"
            kinds.push_back(KindOfWord(withDigits));
        else
            AddRun(run, kinds);
        at = digits;
    }
    return kinds;
}

bool IsSecretWord(const std::vector<unsigned>& kinds, std::size_t at)
{
    const unsigned before = at > 0 ? kinds[at - 1] : 0;
    const unsigned after = at + 1 < kinds.size() ? kinds[at + 1] : 0;
    const bool isLast = at + 1 == kinds.size();
    return (kinds[at] & kSecret) != 0 || ((kinds[at] & kLastSecret) != 0 && isLast) ||
           ((kinds[at] & kLooseSecret) != 0 && (after & kOtherMeaning) == 0) ||
           ((kinds[at] & kKey) != 0 && (before & kBeforeKey) != 0) ||
           ((kinds[at] & kCode) != 0 && (before & kBeforeCode) != 0);
}

/// What the value is about comes last: "PinLength" is a length. In "MinPin" and "ResetPin" the value may be a PIN; only a
/// switch is none.
NameSays WhatWordsSay(const std::vector<unsigned>& kinds)
{
    std::size_t last = kinds.size();
    for (std::size_t at = 0; at < kinds.size(); ++at)
        last = IsSecretWord(kinds, at) ? at : last;
    if (last == kinds.size())
        return NameSays::Nothing;
    unsigned before = 0;
    unsigned after = 0;
    for (std::size_t at = 0; at < kinds.size(); ++at)
        (at < last ? before : after) |= at == last ? 0U : kinds[at];
    if ((after & kAboutKind) != 0)
        return NameSays::KindOfSecret;
    if ((after & kAboutSize) != 0)
        return NameSays::SizeOfSecret;
    return ((before | after) & kAbout) != 0 ? NameSays::SwitchOfSecret : NameSays::Secret;
}

/// "nPINcode" in small letters and without the "n": its capitals give other words than were meant.
std::string WithoutCapitals(std::string_view name)
{
    const std::size_t prefix = static_cast<std::size_t>(
        std::find_if(name.begin(), name.end(), [](char character) { return !IsLower(character); }) - name.begin());
    if (prefix <= 2 && prefix < name.size() && IsUpper(name[prefix]))
        name.remove_prefix(prefix);
    return ToLower(name);
}

bool IsSwitch(std::string_view value)
{
    constexpr std::string_view kSwitches[] = {"true", "false",  "yes",     "no",      "on",
                                              "off",  "enable", "enabled", "disable", "disabled"};
    return (value.size() == 1 && IsDigit(value[0])) ||
           std::find(std::begin(kSwitches), std::end(kSwitches), ToLower(value)) != std::end(kSwitches);
}

/// With a unit or without.
bool IsNumber(std::string_view value)
{
    constexpr std::size_t kLongest = 10;
    const std::size_t sign = value.starts_with('-') ? 1 : 0;
    const std::size_t unit = std::min(value.find_first_not_of("0123456789", sign), value.size());
    return unit > sign && value.size() <= kLongest &&
           std::all_of(value.begin() + static_cast<std::ptrdiff_t>(unit), value.end(), IsLower);
}

bool IsShortWord(std::string_view value)
{
    constexpr std::size_t kLongest = 16;
    return value.size() <= kLongest && std::all_of(value.begin(), value.end(), [](char character) {
               return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '-' ||
                      character == '_' || character == '/' || character == '+';
           });
}

NameSays ReadName(std::string_view name)
{
    NameSays says = WhatWordsSay(KindsOfWords(name));
    if (says == NameSays::Nothing && std::any_of(name.begin(), name.end(), IsUpper))
        says = WhatWordsSay(KindsOfWords(WithoutCapitals(name)));
    const bool hasSwitchPrefix = name.size() > 1 && name[0] == 'b' && IsUpper(name[1]);
    return says == NameSays::Secret && hasSwitchPrefix ? NameSays::SwitchOfSecret : says;
}

struct NameHash {
    using is_transparent = void; // a name is looked up without a copy of it
    std::size_t operator()(std::string_view name) const { return std::hash<std::string_view>()(name); }
};

} // namespace

NameSays WhatNameSays(std::string_view name)
{
    constexpr std::size_t kLongestKept = 64;
    constexpr std::size_t kMostKept = 20'000;
    // Static, because phones have the same names thousands of times; one for each thread, so that none waits.
    static thread_local std::unordered_map<std::string, NameSays, NameHash, std::equal_to<>> known;
    if (name.size() > kLongestKept)
        return ReadName(name);
    if (const auto found = known.find(name); found != known.end())
        return found->second;
    if (known.size() == kMostKept)
        known.clear();
    return known.emplace(name, ReadName(name)).first->second;
}

bool IsSecretValue(NameSays name, std::string_view value)
{
    switch (name) {
    case NameSays::Nothing:
        return false;
    case NameSays::KindOfSecret:
        return !IsSwitch(value) && !IsNumber(value) && !IsShortWord(value);
    case NameSays::SizeOfSecret:
        return !IsSwitch(value) && !IsNumber(value);
    case NameSays::SwitchOfSecret:
        return !IsSwitch(value);
    case NameSays::Secret:
        return true;
    }
    return true;
}
