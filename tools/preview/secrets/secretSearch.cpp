// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "secretSearch.h"

#include <algorithm>
#include <cctype>

namespace
{

/// Ones from here on are hidden inside of words as well.
constexpr std::size_t kShortestInWords = 6;

bool IsWordCharacter(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    return std::isalnum(byte) != 0 || byte >= 0x80;
}

bool IsWord(const std::string& text, std::size_t begin, std::size_t end)
{
    return (begin == 0 || !IsWordCharacter(text[begin - 1])) && (end == text.size() || !IsWordCharacter(text[end]));
}

} // namespace

void SecretSearch::Add(const std::string& value)
{
    if (value.size() >= kShortest)
        values_[BeginningOf(value, 0)].push_back(value);
}

std::string SecretSearch::Hide(const std::string& text) const
{
    std::string hidden;
    std::size_t secretEnd = 0; // of the secrets that overlap, up to here
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::size_t size = at + kShortest <= text.size() ? LongestAt(text, at) : 0;
        if (size != 0 && at >= secretEnd)
            hidden += kMask;
        secretEnd = std::max(secretEnd, at + size);
        if (at >= secretEnd)
            hidden += text[at];
    }
    return hidden;
}

SecretSearch::Beginning SecretSearch::BeginningOf(const std::string& text, std::size_t at)
{
    Beginning beginning;
    std::copy_n(text.begin() + static_cast<std::ptrdiff_t>(at), kShortest, beginning.begin());
    return beginning;
}

std::size_t SecretSearch::LongestAt(const std::string& text, std::size_t at) const
{
    const auto found = values_.find(BeginningOf(text, at));
    if (found == values_.end())
        return 0;
    std::size_t longest = 0;
    for (const std::string& value : found->second) {
        if (value.size() > longest && text.compare(at, value.size(), value) == 0 &&
            (value.size() >= kShortestInWords || IsWord(text, at, at + value.size())))
            longest = value.size();
    }
    return longest;
}
