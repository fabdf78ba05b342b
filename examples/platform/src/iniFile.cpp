// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "iniFile.h"

#include <algorithm>
#include <iterator>

#include "fileBytes.h"
#include "fileReplacement.h"
#include "integerText.h"

namespace
{

constexpr char kBlanks[] = " \t";
constexpr std::string_view kNoLineHolds("\r\n\0", 3);
constexpr std::string_view kNoValueHolds("\n\0", 2);

std::string_view Trim(std::string_view text)
{
    const std::size_t begin = text.find_first_not_of(kBlanks);
    if (begin == text.npos)
        return {};
    return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

/// @param content      the line without its end
/// @param isInSection  whether a section line came before it; there are no keys outside a section
IniLine ReadLine(std::string_view content, bool isInSection)
{
    IniLine line;
    line.lead = content;
    const std::string_view trimmed = Trim(content);
    const char first = trimmed.empty() ? ';' : trimmed.front();
    const std::size_t bracket = trimmed.find(']');
    const std::size_t equals = content.find('=');

    if (first == '[' && bracket != trimmed.npos) {
        line.kind = IniLine::Kind::Section;
        line.name = trimmed.substr(1, bracket - 1);
    } else if (isInSection && first != ';' && first != '#' && first != '=' && equals != content.npos) {
        line.kind = IniLine::Kind::Key;
        line.name = Trim(content.substr(0, equals));
        const std::size_t value = std::min(content.find_first_not_of(kBlanks, equals + 1), content.size());
        line.lead = content.substr(0, value);
        line.value = content.substr(value);
    }
    return line;
}

std::list<IniLine> ReadLines(std::string_view text)
{
    std::list<IniLine> lines;
    bool isInSection = false;
    while (!text.empty()) {
        std::string_view content = text.substr(0, text.find('\n'));
        std::string_view end = text.substr(content.size(), 1);
        if (!end.empty() && !content.empty() && content.back() == '\r') {
            content.remove_suffix(1);
            end = "\r\n";
        }
        lines.push_back(ReadLine(content, isInSection));
        lines.back().end = end;
        isInSection = isInSection || lines.back().kind == IniLine::Kind::Section;
        text.remove_prefix(content.size() + end.size());
    }
    return lines;
}

bool IsSection(const IniLine& line, std::string_view name)
{
    return line.kind == IniLine::Kind::Section && line.name == name;
}

bool IsHolder(std::string_view text)
{
    return text.find_first_of(kNoLineHolds) == text.npos;
}

/// A CR at the end would become part of the line end.
bool IsValue(std::string_view text)
{
    return text.find_first_of(kNoValueHolds) == text.npos && (text.empty() || text.back() != '\r');
}

bool CanBeStored(std::string_view section, std::string_view key, std::string_view text)
{
    const bool isSection = !section.empty() && IsHolder(section) && section.find(']') == section.npos;
    const bool isKey = !key.empty() && IsHolder(key) && key.find('=') == key.npos && Trim(key) == key &&
                       std::string_view("[;#").find(key.front()) == key.npos;
    return isSection && isKey && IsValue(text);
}

} // namespace

bool IniLine::SetValue(std::string_view text)
{
    if (!IsValue(text))
        return false;
    const std::string oldEnd = end;
    *this = ReadLine(lead + std::string(text), /*isInSection=*/true); // leading blanks are not part of the value
    end = oldEnd;
    return true;
}

int iniFile::LoadFromFile(const char* path)
{
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    path_ = path == nullptr ? "" : path;
    mark_.clear();
    lines_.clear();
    std::string bytes;
    if (ReadFile(path_.c_str(), bytes) != ReadResult::Done)
        return 0;

    std::string_view text = bytes;
    if (text.substr(0, kMark.size()) == kMark) {
        mark_ = kMark;
        text.remove_prefix(kMark.size());
    }
    lines_ = ReadLines(text);
    return 1;
}

int iniFile::SaveToFile(const char* path) const
{
    std::string bytes = mark_;
    for (const IniLine& line : lines_)
        bytes += line.lead + line.value + line.end;
    return ReplaceFile(path == nullptr ? path_.c_str() : path, bytes) ? 1 : 0;
}

const IniLine* iniFile::FindKey(std::string_view section, std::string_view key) const
{
    bool isHere = false;
    for (const IniLine& line : lines_) {
        if (line.kind == IniLine::Kind::Section)
            isHere = line.name == section;
        else if (isHere && line.kind == IniLine::Kind::Key && line.name == key)
            return &line;
    }
    return nullptr;
}

std::string iniFile::GetTextValue(const phraseConstTextA& section, const phraseConstTextA& key,
                                  const phraseConstTextA& defaultText) const
{
    const IniLine* line = FindKey(section.view(), key.view());
    return line == nullptr ? std::string(defaultText.view()) : line->value;
}

int iniFile::GetIntValue(const phraseConstTextA& section, const phraseConstTextA& key, int defaultValue) const
{
    const IniLine* line = FindKey(section.view(), key.view());
    return line == nullptr ? defaultValue : ParseInt32(line->value.c_str());
}

int iniFile::SetTextValue(const phraseConstTextA& section, const phraseConstTextA& key, const phraseConstTextA& text)
{
    if (!CanBeStored(section.view(), key.view(), text.view()))
        return 0;
    if (const IniLine* line = FindKey(section.view(), key.view()))
        return const_cast<IniLine*>(line)->SetValue(text.view()) ? 1 : 0; // the lines are this document's own
    AddKey(section.view(), key.view(), text.view());
    return 1;
}

/// New lines use the line end of the first one.
std::string iniFile::LineEnd() const
{
    return lines_.empty() || lines_.front().end.empty() ? "\n" : lines_.front().end;
}

std::list<IniLine>::iterator iniFile::AddSection(std::string_view section)
{
    const std::string end = LineEnd();
    if (!lines_.empty()) {
        IniLine& last = lines_.back();
        const bool isBlank = Trim(last.lead + last.value).empty();
        if (last.end.empty())
            last.end = end;
        if (!isBlank)
            lines_.emplace_back().end = end;
    }
    lines_.push_back(ReadLine("[" + std::string(section) + "]", /*isInSection=*/true));
    lines_.back().end = end;
    return std::prev(lines_.end());
}

void iniFile::AddKey(std::string_view section, std::string_view key, std::string_view text)
{
    auto before =
        std::find_if(lines_.begin(), lines_.end(), [&](const IniLine& line) { return IsSection(line, section); });
    if (before == lines_.end())
        before = AddSection(section);
    for (auto line = std::next(before); line != lines_.end() && line->kind != IniLine::Kind::Section; ++line) {
        if (line->kind == IniLine::Kind::Key)
            before = line;
    }

    std::string equals = "=";
    if (before->kind == IniLine::Kind::Key) // with the same blanks around it
        equals = before->lead.substr(before->lead.find_first_not_of(kBlanks) + before->name.size());
    const std::string end = LineEnd();
    if (before->end.empty())
        before->end = end;
    const auto added =
        lines_.insert(std::next(before), ReadLine(std::string(key) + equals + std::string(text), /*isInSection=*/true));
    added->end = end;
}

pointer_chain_pNext* iniFile::objects()
{
    sections_.clear();
    head_.Clear();
    for (IniLine& line : lines_) {
        if (line.kind == IniLine::Kind::Section) {
            pointer_chain_pNext& last = sections_.empty() ? head_ : sections_.back();
            last.Append(sections_.emplace_back(line));
        } else if (line.kind == IniLine::Kind::Key) {
            sections_.back().AddKey(line);
        }
    }
    return &head_;
}
