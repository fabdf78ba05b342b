// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The secrets of a phone in all forms that were seen, and how they are related.
class SecretValues
{
public:
    /// Adds a secret, unless it is empty, and its lines without the blanks around them: a text may show them one by one.
    void Add(std::string_view value);

    /// Adds an enciphered value and what it deciphers to in turn.
    ///
    /// @param plain  empty: nothing happens
    void AddPlain(const std::string& value, const std::vector<std::string>& plain);

    /// @return each with what it deciphers to in turn
    const std::map<std::string, std::vector<std::string>>& All() const { return values_; }

    /// @return how many times the value is enciphered
    int LayersOf(const std::string& value) const;

    /// @return what the value deciphers to in the end; itself when it is plain
    std::string CoreOf(const std::string& value) const;

    /// What became of a secret, without the secret: "same, now enciphered", "changed" and the like.
    std::string Relation(const std::optional<std::string>& before, const std::optional<std::string>& after) const;

private:
    std::map<std::string, std::vector<std::string>> values_;
};
