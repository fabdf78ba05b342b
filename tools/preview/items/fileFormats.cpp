// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fileFormats.h"

#include <algorithm>

#include "allV4XToV50.h"
#include "configMapper.h"
#include "iniText.h"
#include "phoneFacts.h"
#include "phoneImage/normalPath.h"

namespace
{

/// The XML files that passes read or write. Static: made once, and asked about each file.
const std::set<std::string>& XmlPaths()
{
    static const std::set<std::string> paths = [] {
        std::set<std::string> all = {kTableFile,   kEntryListFile, kNewContactList, kNewContactGroups,
                                     kNewDialPlan, kNewDialNow,    kNewDSSKeys,     kNewRemoteBooks};
        for (const XmlTranslation& translation : kXmlTranslations)
            all.insert(translation.source.path);
        for (const XmlFile& layout : kKeyLayouts)
            all.insert(layout.path);
        return all;
    }();
    return paths;
}

constexpr const char* kIniPaths[] = {kUserIni,      kFactoryUserIni, kSystemIni,    kHandOverFile,
                                     kHandOverCopy, kVersionIni,     kDirectIPFile, kFactoryAccount};

bool IsCommentOrBlank(std::string_view line)
{
    const std::size_t first = line.find_first_not_of(" \t\r");
    return first == std::string_view::npos || line[first] == ';' || line[first] == '#';
}

/// Sections, keys in them, comments, and nothing else.
bool LooksLikeIni(std::string_view text)
{
    bool isInSection = false;
    for (std::size_t begin = FirstIniLine(text); begin < text.size();) {
        const IniLine line = ReadIniLine(text, begin);
        const std::string_view content = text.substr(begin, line.contentEnd - begin);
        begin = line.end;
        isInSection = isInSection || line.kind == IniLineKind::Section;
        if ((line.kind == IniLineKind::Key && !isInSection) ||
            (line.kind == IniLineKind::Other && !IsCommentOrBlank(content)))
            return false;
    }
    return isInSection;
}

FileFormat GuessFormat(std::string_view content)
{
    const std::size_t first = content.find_first_not_of(" \t\r\n", FirstIniLine(content));
    if (first != std::string_view::npos && content[first] == '<')
        return FileFormat::Xml;
    return LooksLikeIni(content) ? FileFormat::Ini : FileFormat::Text;
}

} // namespace

FileFormats::FileFormats(const PhoneLists& lists) : iniPaths_(std::begin(kIniPaths), std::end(kIniPaths))
{
    const auto add = [this](const std::string& path) {
        if (!path.empty())
            iniPaths_.insert(NormalPath(path));
    };
    for (int account = 0; account <= kLastAccount; ++account)
        add(AccountFilePath(account));
    for (const ListedEntry& entry : lists.entries)
        add(entry.file);
    for (const TableRecord& record : lists.records) {
        add(record.sourceFile);
        add(record.file);
    }
}

FileFormat FileFormats::Of(const std::string& path, std::string_view before, std::string_view after) const
{
    if (before.find('\0') != std::string_view::npos || after.find('\0') != std::string_view::npos)
        return FileFormat::Binary;
    if (IsXmlOfPass(path))
        return FileFormat::Xml;
    if (iniPaths_.count(path) != 0)
        return FileFormat::Ini;
    if (before.empty() || after.empty())
        return GuessFormat(before.empty() ? after : before);
    const FileFormat format = GuessFormat(before);
    return format == GuessFormat(after) ? format : FileFormat::Text;
}

std::set<std::string> FileFormats::Paths() const
{
    std::set<std::string> paths = iniPaths_;
    paths.insert(XmlPaths().begin(), XmlPaths().end());
    return paths;
}

bool IsXmlOfPass(const std::string& path)
{
    return XmlPaths().count(path) != 0;
}
