// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

/// What stands for a secret.
constexpr char kMask[] = "\u2022\u2022\u2022\u2022\u2022\u2022";

/// Finds known secrets in texts that are shown for another reason. Looks at a text once, however many secrets there are.
class SecretSearch
{
public:
    /// Values of fewer than four bytes are left out: a text that lost every "1" could not be read, and would tell more.
    void Add(const std::string& value);

    /// Puts a mask in place of every secret, and of secrets that overlap. One of up to five bytes counts only where it is
    /// no part of a word.
    std::string Hide(const std::string& text) const;

private:
    static constexpr std::size_t kShortest = 4;
    using Beginning = std::array<char, kShortest>;

    static Beginning BeginningOf(const std::string& text, std::size_t at);
    std::size_t LongestAt(const std::string& text, std::size_t at) const;

    std::map<Beginning, std::vector<std::string>> values_; ///< by their first bytes
};
