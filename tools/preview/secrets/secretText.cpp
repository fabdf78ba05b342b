// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "secretText.h"

#include <algorithm>
#include <cctype>
#include <string>

#include "iniText.h"
#include "passwordCipher.h"
#include "phoneImage/secretNames.h"

namespace
{

constexpr std::string_view kBlanks = " \t";

bool IsAlphanumeric(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9');
}

bool IsNameCharacter(char character)
{
    return IsAlphanumeric(character) || character == '_' || character == '-' || character == '.';
}

/// The name that ends before the position, or before the blanks and quotes there.
std::string_view NameBefore(std::string_view text, std::size_t end)
{
    while (end > 0 && std::string_view(" \t\"'\\").find(text[end - 1]) != std::string_view::npos)
        --end;
    std::size_t begin = end;
    while (begin > 0 && IsNameCharacter(text[begin - 1]))
        --begin;
    return text.substr(begin, end - begin);
}

/// What is found within this distance or not at all: a hostile file must not make us read it again and again.
constexpr std::size_t kWindow = 4096;

std::size_t FindWithin(std::string_view text, std::string_view what, std::size_t begin)
{
    const std::size_t found = text.substr(begin, kWindow).find(what);
    return found == std::string_view::npos ? found : begin + found;
}

/// The end of a line, or of the lines that it goes on with after a backslash.
std::size_t EndOfLine(std::string_view text, std::size_t begin)
{
    std::size_t end = std::min(text.size(), text.find_first_of("\r\n", begin));
    while (end < text.size() && end > begin && text[end - 1] == '\\') {
        const std::size_t next = text.find_first_not_of("\r\n", end);
        if (next == std::string_view::npos)
            break;
        end = std::min(text.size(), text.find_first_of("\r\n", next));
    }
    return end;
}

/// The quote that ends a value; one after a backslash does not, if there is another one.
std::size_t FindClosingQuote(std::string_view text, std::string_view quote, std::size_t begin)
{
    std::size_t close = FindWithin(text, quote, begin);
    while (close != std::string_view::npos && text[close - 1] == '\\') {
        const std::size_t next = FindWithin(text, quote, close + 1);
        if (next == std::string_view::npos || text.substr(close, next - close).find('\n') != std::string_view::npos)
            break;
        close = next;
    }
    return close;
}

/// The value after the position: to the closing quote, or to the end of the line.
SecretSpan ValueAfter(std::string_view text, std::size_t begin)
{
    begin = std::min(text.size(), text.find_first_not_of(kBlanks, begin));
    if (begin < text.size() && (text[begin] == '"' || text[begin] == '\'')) {
        const std::size_t close = FindClosingQuote(text, text.substr(begin, 1), begin + 1);
        if (close != std::string_view::npos)
            return {begin + 1, close};
    }
    return {begin, EndOfLine(text, begin)};
}

void FindAssigned(std::string_view text, std::vector<SecretSpan>& spans)
{
    std::size_t at = text.find_first_of("=:");
    while (at != std::string_view::npos) {
        const NameSays name = WhatNameSays(NameBefore(text, at));
        ++at;
        if (name != NameSays::Nothing) {
            const SecretSpan span = ValueAfter(text, at);
            if (span.begin < span.end && IsSecretValue(name, text.substr(span.begin, span.end - span.begin))) {
                spans.push_back(span);
                at = span.end;
            }
        }
        at = text.find_first_of("=:", at);
    }
}

void FindElements(std::string_view text, std::vector<SecretSpan>& spans)
{
    for (std::size_t open = text.find('<'); open != std::string_view::npos; open = text.find('<', open + 1)) {
        std::size_t end = open + 1;
        while (end < text.size() && IsNameCharacter(text[end]))
            ++end;
        const NameSays name = WhatNameSays(text.substr(open + 1, end - open - 1));
        const std::size_t close = name == NameSays::Nothing ? std::string_view::npos : FindWithin(text, ">", end);
        if (close == std::string_view::npos)
            continue;
        const std::size_t next = std::min(FindWithin(text, "</", close), std::min(text.size(), close + kWindow));
        if (IsSecretValue(name, text.substr(close + 1, next - close - 1)))
            spans.push_back({close + 1, next});
    }
}

/// From the dashes that end the BEGIN mark, wherever on a line, to the END mark.
void FindPrivateKeys(std::string_view text, std::vector<SecretSpan>& spans)
{
    constexpr std::string_view kBegin = "-----BEGIN ";
    constexpr std::size_t kLongestMark = 80;
    std::size_t begin = text.find(kBegin);
    while (begin != std::string_view::npos) {
        begin += kBegin.size();
        const std::size_t dashes = text.substr(begin, kLongestMark).find("-----");
        const std::string_view mark = text.substr(begin, dashes);
        if (dashes != std::string_view::npos && mark.find("PRIVATE KEY") != std::string_view::npos) {
            begin += dashes + std::string_view("-----").size();
            const std::size_t end = std::min(text.size(), text.find("-----END", begin));
            if (begin < end)
                spans.push_back({begin, end});
            begin = end;
        }
        begin = text.find(kBegin, begin);
    }
}

void FindPlaces(std::string_view text, const SecretPlaces& places, std::vector<SecretSpan>& spans)
{
    std::string_view section;
    for (std::size_t begin = FirstIniLine(text); begin < text.size();) {
        const IniLine line = ReadIniLine(text, begin);
        begin = line.end;
        if (line.kind == IniLineKind::Section)
            section = line.name;
        if (line.kind != IniLineKind::Key || line.value.empty() ||
            !places.IsSecret(section, line.name, WhatNameSays(line.name), line.value))
            continue;
        const auto valueBegin = static_cast<std::size_t>(line.value.data() - text.data());
        spans.push_back({valueBegin, valueBegin + line.value.size()});
    }
}

/// "username bob password hunter": the last word of a line, after one that is a name of a secret.
void FindLastWords(std::string_view text, std::vector<SecretSpan>& spans)
{
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.size(), text.find('\n', begin));
        const std::string_view line = text.substr(begin, end - begin);
        const std::size_t wordEnd = line.find_last_not_of(" \t\r") + 1; // npos + 1 is 0: a blank line
        const std::size_t blank = line.substr(0, wordEnd).find_last_of(kBlanks);
        if (blank != std::string_view::npos && WhatNameSays(NameBefore(line, blank)) == NameSays::Secret)
            spans.push_back({begin + blank + 1, begin + wordEnd, /*isGuess=*/true});
        begin = end + 1;
    }
}

std::vector<SecretSpan> Merge(std::vector<SecretSpan> spans)
{
    std::sort(spans.begin(), spans.end(),
              [](const SecretSpan& one, const SecretSpan& other) { return one.begin < other.begin; });
    std::vector<SecretSpan> merged;
    for (const SecretSpan& span : spans) {
        if (!merged.empty() && span.begin <= merged.back().end) {
            merged.back().end = std::max(merged.back().end, span.end);
            merged.back().isGuess = merged.back().isGuess && span.isGuess;
        } else {
            merged.push_back(span);
        }
    }
    return merged;
}

} // namespace

std::vector<SecretSpan> FindSecretSpans(std::string_view text)
{
    std::vector<SecretSpan> spans;
    FindAssigned(text, spans);
    FindElements(text, spans);
    FindPrivateKeys(text, spans);
    return Merge(std::move(spans));
}

std::vector<SecretSpan> FindFileSecretSpans(std::string_view content, const SecretPlaces& places)
{
    std::vector<SecretSpan> spans = FindSecretSpans(content);
    FindPlaces(content, places, spans);
    FindLastWords(content, spans);
    return Merge(std::move(spans));
}

std::vector<std::string_view> FindCipherTexts(std::string_view text)
{
    constexpr std::size_t kShortest = 23; // 16 bytes and one of a password
    std::vector<std::string_view> texts;
    for (std::size_t begin = 0; begin < text.size();) {
        std::size_t end = begin;
        while (end < text.size() && (IsAlphanumeric(text[end]) || text[end] == '+' || text[end] == '/'))
            ++end;
        const std::size_t size = end - begin;
        if (size >= kShortest && size < kPasswordBufferSize)
            texts.push_back(text.substr(begin, size));
        begin = end + 1;
    }
    return texts;
}
