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

/// What is assigned behind the position: to the closing quote, or to the end of the line.
SecretSpan ValueBehind(std::string_view text, std::size_t begin)
{
    while (begin < text.size() && kBlanks.find(text[begin]) != std::string_view::npos)
        ++begin;
    if (begin < text.size() && (text[begin] == '"' || text[begin] == '\'')) {
        const std::size_t close = text.find(text[begin], begin + 1);
        if (close != std::string_view::npos)
            return {begin + 1, close};
    }
    return {begin, std::min(text.size(), text.find_first_of("\r\n", begin))};
}

void FindAssigned(std::string_view text, std::vector<SecretSpan>& spans)
{
    for (std::size_t at = text.find_first_of("=:"); at != std::string_view::npos;
         at = text.find_first_of("=:", at + 1)) {
        const SecretSpan span = ValueBehind(text, at + 1);
        if (span.begin < span.end &&
            IsSecretValue(NameBefore(text, at), text.substr(span.begin, span.end - span.begin)))
            spans.push_back(span);
    }
}

void FindElements(std::string_view text, std::vector<SecretSpan>& spans)
{
    for (std::size_t open = text.find('<'); open != std::string_view::npos; open = text.find('<', open + 1)) {
        std::size_t end = open + 1;
        while (end < text.size() && IsNameCharacter(text[end]))
            ++end;
        const std::size_t close = text.find('>', end);
        if (close == std::string_view::npos || !IsSecretName(text.substr(open + 1, end - open - 1)))
            continue;
        const std::size_t next = std::min(text.size(), text.find("</", close));
        if (close + 1 < next)
            spans.push_back({close + 1, next});
    }
}

void FindPrivateKeys(std::string_view text, std::vector<SecretSpan>& spans)
{
    constexpr std::string_view kBegin = "-----BEGIN ";
    for (std::size_t begin = text.find(kBegin); begin != std::string_view::npos; begin = text.find(kBegin, begin + 1)) {
        const std::size_t lineEnd = std::min(text.size(), text.find('\n', begin));
        if (text.substr(begin, lineEnd - begin).find("PRIVATE KEY") == std::string_view::npos || lineEnd == text.size())
            continue;
        spans.push_back({lineEnd + 1, std::min(text.size(), text.find("-----END", lineEnd))});
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
