// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "secretSearch.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace
{

bool IsWordCharacter(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    return std::isalnum(byte) != 0 || byte >= 0x80;
}

bool IsWord(const std::string& text, std::size_t begin, std::size_t end)
{
    return (begin == 0 || !IsWordCharacter(text[begin - 1])) && (end == text.size() || !IsWordCharacter(text[end]));
}

bool IsAt(const std::string& text, std::size_t at, const std::string& value)
{
    return text.compare(at, value.size(), value) == 0 &&
           (value.size() >= SecretSearch::kShortestInWords || IsWord(text, at, at + value.size()));
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
        std::size_t size = 0;
        for (const std::string& value : ValuesFrom(text, at))
            size = value.size() > size && IsAt(text, at, value) ? value.size() : size;
        if (size != 0 && at >= secretEnd)
            hidden += kMask;
        secretEnd = std::max(secretEnd, at + size);
        if (at >= secretEnd)
            hidden += text[at];
    }
    return hidden;
}

std::set<std::string> SecretSearch::FindIn(const std::string& text) const
{
    std::set<std::string> found;
    for (std::size_t at = 0; at < text.size(); ++at) {
        for (const std::string& value : ValuesFrom(text, at)) {
            if (IsAt(text, at, value))
                found.insert(value);
        }
    }
    return found;
}

SecretSearch::Beginning SecretSearch::BeginningOf(const std::string& text, std::size_t at)
{
    Beginning beginning = 0;
    std::memcpy(&beginning, text.data() + at, kShortest);
    return beginning;
}

const std::vector<std::string>& SecretSearch::ValuesFrom(const std::string& text, std::size_t at) const
{
    static const std::vector<std::string> none; // what the reference is to where nothing begins
    if (at + kShortest > text.size())
        return none;
    const auto found = values_.find(BeginningOf(text, at));
    return found == values_.end() ? none : found->second;
}
