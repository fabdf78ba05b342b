// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "secretSpans.h"

#include <algorithm>

#include "iniText.h"
#include "secretNames.h"

namespace
{

constexpr std::string_view kBlanks = " \t";

bool IsNameCharacter(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || character == '_' || character == '-' || character == '.';
}

/// The name that ends before the position, blanks and a quote between them passed over.
std::string_view NameBefore(std::string_view text, std::size_t end)
{
    while (end > 0 &&
           (kBlanks.find(text[end - 1]) != std::string_view::npos || text[end - 1] == '"' || text[end - 1] == '\''))
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

/// What is assigned behind the position: to the closing quote, or to the end of the line.
SecretSpan ValueBehind(std::string_view text, std::size_t begin)
{
    while (begin < text.size() && kBlanks.find(text[begin]) != std::string_view::npos)
        ++begin;
    if (begin < text.size() && (text[begin] == '"' || text[begin] == '\'')) {
        const std::size_t close = FindWithin(text, text.substr(begin, 1), begin + 1);
        if (close != std::string_view::npos)
            return {begin + 1, close};
    }
    return {begin, std::min(text.size(), text.find_first_of("\r\n", begin))};
}

void FindAssigned(std::string_view text, std::vector<SecretSpan>& spans)
{
    std::size_t at = text.find_first_of("=:");
    while (at != std::string_view::npos) {
        const std::string_view name = NameBefore(text, at);
        ++at;
        if (IsSecretName(name)) {
            const SecretSpan span = ValueBehind(text, at);
            if (IsSecretValue(name, text.substr(span.begin, span.end - span.begin)) && span.begin < span.end)
                spans.push_back(span);
            at = span.end;
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
        if (!IsSecretName(text.substr(open + 1, end - open - 1)))
            continue;
        const std::size_t close = FindWithin(text, ">", end);
        if (close == std::string_view::npos)
            continue;
        const std::size_t next = FindWithin(text, "</", close);
        spans.push_back({close + 1, next == std::string_view::npos ? std::min(text.size(), close + kWindow) : next});
    }
}

void FindPrivateKeys(std::string_view text, std::vector<SecretSpan>& spans)
{
    std::size_t begin = text.find("-----BEGIN ");
    while (begin != std::string_view::npos) {
        const std::size_t lineEnd = std::min(text.size(), text.find('\n', begin));
        const bool isKey = text.substr(begin, lineEnd - begin).find("PRIVATE KEY") != std::string_view::npos;
        const std::size_t end = isKey ? std::min(text.size(), text.find("-----END", lineEnd)) : lineEnd;
        if (isKey && lineEnd < end)
            spans.push_back({lineEnd + 1, end});
        begin = text.find("-----BEGIN ", end);
    }
}

std::vector<SecretSpan> Merge(std::vector<SecretSpan> spans)
{
    std::sort(spans.begin(), spans.end(),
              [](const SecretSpan& one, const SecretSpan& other) { return one.begin < other.begin; });
    std::vector<SecretSpan> merged;
    for (const SecretSpan& span : spans) {
        if (!merged.empty() && span.begin <= merged.back().end)
            merged.back().end = std::max(merged.back().end, span.end);
        else
            merged.push_back(span);
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

std::vector<SecretSpan> FindIniSecretSpans(std::string_view text, const SecretPlaces& places)
{
    std::vector<SecretSpan> spans;
    std::string section;
    for (std::size_t begin = FirstIniLine(text); begin < text.size();) {
        const IniLine line = ReadIniLine(text, begin);
        begin = line.end;
        if (line.kind == IniLineKind::Section)
            section = line.name;
        if (line.kind != IniLineKind::Key || line.value.empty() ||
            !places.IsSecret(section, std::string(line.name), std::string(line.value)))
            continue;
        const auto valueBegin = static_cast<std::size_t>(line.value.data() - text.data());
        spans.push_back({valueBegin, valueBegin + line.value.size()});
    }
    const std::vector<SecretSpan> byName = FindSecretSpans(text);
    spans.insert(spans.end(), byName.begin(), byName.end());
    return Merge(std::move(spans));
}
