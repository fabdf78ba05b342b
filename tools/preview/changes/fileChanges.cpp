// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fileChanges.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "allV4XToV50.h"
#include "runSequence.h"

namespace
{

constexpr std::string_view kBlanks = " \t\r\n";

std::string WithoutBlanks(std::string text)
{
    text.erase(std::remove_if(text.begin(), text.end(), [](char byte) { return kBlanks.find(byte) != kBlanks.npos; }),
               text.end());
    return text;
}

/// The passes that read an XML file whole and write it again. The translation table does not.
bool WritesXml(const std::string& pass)
{
    return pass.ends_with(kXmlDataPass) || pass.ends_with(kMode2Pass) ||
           std::any_of(std::begin(kXmlTranslations), std::end(kXmlTranslations),
                       [&pass](const XmlTranslation& translation) { return pass.ends_with(translation.pass); });
}

bool IsWrittenByXmlPass(const FileChange& change)
{
    return IsXmlOfPass(change.path) && !change.passes.empty() &&
           std::all_of(change.passes.begin(), change.passes.end(), WritesXml);
}

void CompareItems(FileChange& change, const std::vector<PassState>& states)
{
    const bool wasThere = change.kind != ChangeKind::Added;
    const bool isThere = change.kind != ChangeKind::Removed;
    const auto before = ReadItems(change.format, change.before);
    const auto after = ReadItems(change.format, change.after);
    change.hasItems = (before || !wasThere || change.before.empty()) && (after || !isThere || change.after.empty());
    if (!change.hasItems)
        return;
    const std::vector<Item> itemsBefore = before.value_or(std::vector<Item>());
    const std::vector<Item> itemsAfter = after.value_or(std::vector<Item>());
    change.items = FindItemChanges(itemsBefore, itemsAfter, states, change.path, change.format);
    change.hasSameValues = change.format == FileFormat::Xml && AreSame(itemsBefore, itemsAfter) &&
                           (IsWrittenByXmlPass(change) || WithoutBlanks(change.before) == WithoutBlanks(change.after));
}

std::string FindOther(const Snapshot& files, const std::string& path, const std::string& content)
{
    for (const auto& [other, file] : files) {
        if (other != path && file.kind == PhoneFile::Kind::File && *file.content == content)
            return other;
    }
    return std::string();
}

/// The file whose bytes a new one has, at any time before.
std::string FindSource(const Snapshot& before, const std::vector<PassState>& states, const FileChange& change)
{
    std::string source = FindOther(before, change.path, change.after);
    for (auto state = states.begin(); source.empty() && state != states.end(); ++state)
        source = FindOther(state->phone, change.path, change.after);
    return source;
}

/// The file that has the bytes that a removed one had, at any time before its end.
std::string FindCopy(const Snapshot& after, const std::vector<PassState>& states, const FileChange& change)
{
    std::string copy = FindOther(after, change.path, change.before);
    for (auto state = states.begin(); copy.empty() && state != states.end(); ++state) {
        if (!ContentOf(state->phone, change.path).empty())
            copy = FindOther(after, change.path, ContentOf(state->phone, change.path));
    }
    return copy;
}

FileChange Compare(const std::string& path, const Snapshot& before, const Snapshot& after,
                   const std::vector<PassState>& states, const FileFormats& formats)
{
    const auto old = before.find(path);
    const auto now = after.find(path);
    FileChange change = {};
    change.path = path;
    const auto contentOf = [](auto found, const Snapshot& phone) {
        return found == phone.end() ? std::nullopt : std::optional<std::string>(*found->second.content);
    };
    const auto contentBefore = contentOf(old, before);
    const auto contentAfter = contentOf(now, after);
    change.kind = KindOf(contentBefore, contentAfter);
    change.before = contentBefore.value_or("");
    change.after = contentAfter.value_or("");
    change.isFile = (old == before.end() || old->second.kind == PhoneFile::Kind::File) &&
                    (now == after.end() || now->second.kind == PhoneFile::Kind::File);
    change.format = formats.Of(path, change.before, change.after);
    change.passes = PassesThat(states, [&path](const Snapshot& one, const Snapshot& other) {
        const auto first = one.find(path);
        const auto second = other.find(path);
        return (first == one.end()) != (second == other.end()) ||
               (first != one.end() && first->second != second->second);
    });
    if (!change.isFile)
        return change;
    if (change.kind == ChangeKind::Added && !change.after.empty())
        change.sameAs = FindSource(before, states, change);
    if (change.kind == ChangeKind::Removed && !change.before.empty())
        change.sameAs = FindCopy(after, states, change);
    CompareItems(change, states);
    return change;
}

bool IsSameFile(const PhoneFile& one, const PhoneFile& other)
{
    return one.kind == other.kind && *one.content == *other.content;
}

} // namespace

std::vector<FileChange> FindChanges(const Snapshot& before, const Snapshot& after, const std::vector<PassState>& states,
                                    const FileFormats& formats)
{
    std::set<std::string> paths;
    for (const auto& [path, file] : before) {
        const auto now = after.find(path);
        if (now == after.end() || !IsSameFile(file, now->second))
            paths.insert(path);
    }
    for (const auto& [path, file] : after) {
        if (before.count(path) == 0)
            paths.insert(path);
    }
    std::vector<FileChange> changes;
    for (const std::string& path : paths)
        changes.push_back(Compare(path, before, after, states, formats));
    return changes;
}
