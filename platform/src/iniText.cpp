// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "iniText.h"

#include <cstring>

namespace
{

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kLineBreaksAndZero("\r\n\0", 3);
constexpr std::string_view kLineFeedAndZero("\n\0", 2);

std::string_view TrimLeft(std::string_view text)
{
    const std::size_t begin = text.find_first_not_of(kBlanks);
    return begin == std::string_view::npos ? text.substr(text.size()) : text.substr(begin);
}

std::string_view TrimRight(std::string_view text)
{
    return text.substr(0, text.find_last_not_of(kBlanks) + 1); // npos + 1 is 0: only blanks
}

std::size_t PositionIn(std::string_view text, std::string_view part)
{
    return static_cast<std::size_t>(part.data() - text.data());
}

bool HasAnyOf(std::string_view text, std::string_view characters)
{
    return text.find_first_of(characters) != std::string_view::npos;
}

bool IsStorable(std::string_view section, std::string_view key, std::string_view value)
{
    if (section.empty() || section.find(']') != std::string_view::npos || HasAnyOf(section, kLineBreaksAndZero))
        return false;
    if (key.empty() || key.find('=') != std::string_view::npos || HasAnyOf(key, kLineBreaksAndZero))
        return false;
    if (TrimLeft(key).size() != key.size() || TrimRight(key).size() != key.size() || HasAnyOf(key.substr(0, 1), "[;#"))
        return false;
    // A CR at the end would become part of the line end.
    return !HasAnyOf(value, kLineFeedAndZero) && (value.empty() || value.back() != '\r');
}

/// New lines use the line end of the first line.
std::string_view LineEndOf(std::string_view text)
{
    const std::size_t feed = text.find('\n');
    return feed != std::string_view::npos && feed > 0 && text[feed - 1] == '\r' ? "\r\n" : "\n";
}

/// The place of a new key in the section.
struct KeyPlace {
    std::size_t position;          ///< after this line
    std::string_view blanksBefore; ///< the blanks around the "=" of the key line before it
    std::string_view blanksBehind;
};

KeyPlace PlaceBehindKey(std::string_view text, const IniLine& line)
{
    const std::size_t nameEnd = PositionIn(text, line.name) + line.name.size();
    const std::size_t equals = text.find('=', nameEnd);
    const std::size_t valueBegin = PositionIn(text, line.value);
    return {line.end, text.substr(nameEnd, equals - nameEnd), text.substr(equals + 1, valueBegin - equals - 1)};
}

bool IsFirstInLine(std::string_view text, std::size_t position)
{
    const std::size_t firstLine = FirstIniLine(text);
    while (position > firstLine && kBlanks.find(text[position - 1]) != std::string_view::npos)
        --position;
    return position == firstLine || text[position - 1] == '\n';
}

/// Finds a section line of any name by its bracket. Parsing every line instead takes seven times as long as reading a
/// file.
///
/// @param begin  where a line begins
/// @return the position of the bracket of the first section line; the text's size if there is none
std::size_t FindSectionLine(std::string_view text, std::size_t begin)
{
    std::size_t bracket = text.find('[', begin);
    for (; bracket != std::string_view::npos; bracket = text.find('[', bracket + 1)) {
        if (IsFirstInLine(text, bracket) && ReadIniLine(text, bracket).kind == IniLineKind::Section)
            return bracket;
    }
    return text.size();
}

/// Finds the section line of that name. Comparing the name before looking for the line end halves the time.
std::size_t FindSectionNamed(std::string_view section, std::string_view text, std::size_t begin)
{
    if (section.find_first_of("]\n") != std::string_view::npos)
        return text.size(); // no section line can contain such a name
    std::size_t bracket = text.find('[', begin);
    for (; bracket != std::string_view::npos; bracket = text.find('[', bracket + 1)) {
        const std::string_view behind = text.substr(bracket + 1);
        const bool isNamed = behind.size() > section.size() && behind[section.size()] == ']' &&
                             behind.substr(0, section.size()) == section;
        if (isNamed && IsFirstInLine(text, bracket))
            return bracket;
    }
    return text.size();
}

/// Searches for the key's name between the two line beginnings, and parses only the lines that start with it.
std::optional<std::string_view> FindKey(std::string_view text, std::size_t begin, std::size_t end, std::string_view key)
{
    if (key.empty())
        return std::nullopt;
    while (const void* found = memmem(text.data() + begin, end - begin, key.data(), key.size())) {
        begin = static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
        if (IsFirstInLine(text, begin)) {
            const IniLine line = ReadIniLine(text, begin);
            if (line.kind == IniLineKind::Key && line.name == key)
                return line.value;
        }
        ++begin;
    }
    return std::nullopt;
}

/// After the last key line of the first section of that name, or after its section line if it has no key.
std::optional<KeyPlace> FindPlaceInSection(std::string_view text, std::string_view section)
{
    const std::size_t begin = FindSectionNamed(section, text, FirstIniLine(text));
    if (begin == text.size())
        return std::nullopt;

    KeyPlace place = {ReadIniLine(text, begin).end, {}, {}};
    const std::size_t end = FindSectionLine(text, place.position);
    for (std::size_t at = place.position; at < end;) {
        const IniLine line = ReadIniLine(text, at);
        if (line.kind == IniLineKind::Key)
            place = PlaceBehindKey(text, line);
        at = line.end;
    }
    return place;
}

/// @param text  not empty
bool EndsInBlankLine(std::string_view text)
{
    const std::string_view lessLastByte = text.substr(0, text.size() - 1); // the last byte may be a line feed
    const std::size_t lastLine = lessLastByte.rfind('\n') + 1;             // npos + 1 is 0: there is one line
    const IniLine line = ReadIniLine(text, lastLine);
    return TrimLeft(text.substr(lastLine, line.contentEnd - lastLine)).empty();
}

/// Inserts after the line that ends at the position; a last line without a line end gets one first.
void InsertBehindLine(std::string& text, std::size_t position, std::string inserted, std::string_view lineEnd)
{
    if (position > FirstIniLine(text) && text[position - 1] != '\n')
        inserted.insert(0, lineEnd);
    text.insert(position, inserted);
}

void AddKey(std::string& text, const KeyPlace& place, std::string_view key, std::string_view value)
{
    const std::string_view lineEnd = LineEndOf(text);
    std::string line(key);
    line.append(place.blanksBefore).append("=").append(place.blanksBehind).append(value).append(lineEnd);
    InsertBehindLine(text, place.position, std::move(line), lineEnd);
}

void AddSection(std::string& text, std::string_view section, std::string_view key, std::string_view value)
{
    const std::string_view lineEnd = LineEndOf(text);
    const std::string_view content = std::string_view(text).substr(FirstIniLine(text));
    std::string lines;
    if (!content.empty() && !EndsInBlankLine(content))
        lines.append(lineEnd);
    lines.append("[").append(section).append("]").append(lineEnd);
    lines.append(key).append("=").append(value).append(lineEnd);
    InsertBehindLine(text, text.size(), std::move(lines), lineEnd);
}

} // namespace

IniLine ReadIniLine(std::string_view text, std::size_t begin)
{
    const std::size_t feed = text.find('\n', begin);
    IniLine line = {IniLineKind::Other, text.size(), text.size(), {}, {}};
    if (feed != std::string_view::npos) {
        line.end = feed + 1;
        line.contentEnd = feed > begin && text[feed - 1] == '\r' ? feed - 1 : feed;
    }

    const std::string_view content = TrimLeft(text.substr(begin, line.contentEnd - begin));
    if (content.empty() || content.front() == ';' || content.front() == '#')
        return line;
    if (content.front() == '[') {
        const std::size_t bracket = content.find(']');
        if (bracket != std::string_view::npos) {
            line.kind = IniLineKind::Section;
            line.name = content.substr(1, bracket - 1);
            return line;
        }
    }
    const std::size_t equals = content.find('=');
    if (equals == std::string_view::npos || equals == 0)
        return line;
    line.kind = IniLineKind::Key;
    line.name = TrimRight(content.substr(0, equals));
    line.value = TrimLeft(content.substr(equals + 1));
    return line;
}

std::size_t FirstIniLine(std::string_view text)
{
    return text.substr(0, kByteOrderMark.size()) == kByteOrderMark ? kByteOrderMark.size() : 0;
}

std::optional<std::string_view> FindIniValue(std::string_view text, std::string_view section, std::string_view key)
{
    std::size_t begin = FindSectionNamed(section, text, FirstIniLine(text));
    while (begin < text.size()) {
        const std::size_t firstKey = ReadIniLine(text, begin).end;
        const std::size_t end = FindSectionLine(text, firstKey);
        if (const auto value = FindKey(text, firstKey, end, key))
            return value;
        begin = FindSectionNamed(section, text, end);
    }
    return std::nullopt;
}

bool SetIniValue(std::string& text, std::string_view section, std::string_view key, std::string_view value)
{
    if (!IsStorable(section, key, value))
        return false;
    if (const auto present = FindIniValue(text, section, key))
        text.replace(PositionIn(text, *present), present->size(), value);
    else if (const auto place = FindPlaceInSection(text, section))
        AddKey(text, *place, key, value);
    else
        AddSection(text, section, key, value);
    return true;
}
