// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

/// What is shown instead of a secret.
constexpr char kMask[] = "\u2022\u2022\u2022\u2022\u2022\u2022";

/// Finds known secrets in other texts. Reads a text once, however many secrets there are.
class SecretSearch
{
public:
    /// A secret of less size is found only as a whole word.
    static constexpr std::size_t kShortestInWords = 6;

    /// Values of fewer than four bytes are not added: a text that lost every "1" would be unreadable, and show more.
    void Add(const std::string& value);

    /// Replaces every secret by a mask; secrets that overlap by one mask.
    std::string Hide(const std::string& text) const;

    /// @return the secrets in the text
    std::set<std::string> FindIn(const std::string& text) const;

private:
    using Beginning = std::uint32_t;
    static constexpr std::size_t kShortest = sizeof(Beginning);

    static Beginning BeginningOf(const std::string& text, std::size_t at);
    const std::vector<std::string>& ValuesFrom(const std::string& text, std::size_t at) const;

    std::unordered_map<Beginning, std::vector<std::string>> values_; ///< by their first bytes
};
