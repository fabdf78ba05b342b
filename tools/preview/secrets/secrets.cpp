// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "secrets.h"

#include <algorithm>
#include <optional>

#include "iniText.h"
#include "secretText.h"

namespace
{

void Replace(std::string& text, std::string_view character, std::string_view entity)
{
    for (std::size_t at = text.find(character); at != std::string::npos; at = text.find(character, at + entity.size()))
        text.replace(at, character.size(), entity);
}

/// As an XML file has it: between tags, and in attributes of either library.
std::set<std::string> XmlForms(std::string value)
{
    Replace(value, "&", "&amp;");
    Replace(value, "<", "&lt;");
    Replace(value, ">", "&gt;");
    std::set<std::string> forms = {value};
    Replace(value, "\"", "&quot;");
    forms.insert(value);
    Replace(value, "'", "&apos;");
    forms.insert(value);
    return forms;
}

std::vector<Item> ReadXml(FileFormat format, const std::string& content)
{
    return format == FileFormat::Xml ? ReadItems(format, content).value_or(std::vector<Item>()) : std::vector<Item>();
}

bool HasCipherForm(std::string_view value)
{
    const std::vector<std::string_view> texts = FindCipherTexts(value);
    return texts.size() == 1 && texts.front() == value;
}

/// What the firmware calls its files, sections and keys, a line each.
std::string FirmwareNames(const PhoneLists& lists, const FileFormats& formats)
{
    std::string names;
    for (const std::string& path : formats.Paths())
        names += path + "\n";
    for (const ListedEntry& entry : lists.entries)
        names += entry.section + "\n" + entry.key + "\n";
    for (const TableRecord& record : lists.records) {
        for (const std::string& name : {record.sourceSection, record.sourceKey, record.section, record.key})
            names += name + "\n";
    }
    return names;
}

template <typename Rest, typename MaskOf>
std::string ReplaceSpans(const std::string& text, const std::vector<SecretSpan>& spans, Rest rest, MaskOf maskOf)
{
    std::string hidden;
    std::size_t at = 0;
    for (const SecretSpan& span : spans) {
        hidden += rest(text.substr(at, span.begin - at));
        hidden += maskOf(text.substr(span.begin, span.end - span.begin));
        at = span.end;
    }
    return hidden + rest(text.substr(at));
}

std::string HideWith(const SecretSearch& search, const std::string& text)
{
    const std::string hidden = search.Hide(text);
    return ReplaceSpans(
        hidden, FindSecretSpans(hidden), [](const std::string& part) { return part; },
        [](const std::string&) { return kMask; });
}

} // namespace

Secrets::Secrets(const PhoneLists& lists, Secrecy secrecy) : lists_(lists), places_(lists), secrecy_(secrecy)
{
    for (const ListedEntry& entry : lists.entries) {
        values_.Add(entry.defaultText);
        defaults_.insert(entry.defaultText);
    }
}

void Secrets::Learn(const std::vector<const Snapshot*>& phones, const FileFormats& formats, const StepsClient& steps)
{
    const std::vector<File> files = DistinctFiles(phones, formats);
    Candidates candidates;
    for (const File& file : files) {
        const std::vector<Item> items = ReadXml(file.format, file.content);
        LearnFile(file, items);
        AddCandidates(file, items, candidates);
    }
    Decipher(steps, candidates);
    std::set<SecretPlaces::Place> found;
    for (auto& [value, places] : candidates) {
        if (values_.LayersOf(value) != 0)
            found.merge(places);
    }
    if (places_.Add(found)) {
        for (const File& file : files) // the plain values there
            LearnFile(file, ReadXml(file.format, file.content));
    }
    FillSearches(FirmwareNames(lists_, formats));
}

std::vector<Secrets::File> Secrets::DistinctFiles(const std::vector<const Snapshot*>& phones,
                                                  const FileFormats& formats)
{
    std::set<std::pair<FileFormat, const std::string*>> known;
    std::vector<File> files;
    for (const Snapshot* phone : phones) {
        for (const auto& [path, file] : *phone) {
            if (file.kind != PhoneFile::Kind::File)
                continue;
            const FileFormat format = formats.Of(path, *file.content);
            if (known.emplace(format, file.content.get()).second)
                files.push_back({format, path.ends_with(".key"), *file.content});
        }
    }
    return files;
}

void Secrets::LearnFile(const File& file, const std::vector<Item>& items)
{
    for (const Item& item : items) {
        if (IsSecret(item))
            values_.Add(item.value);
        else
            LearnSpans(item.value, FindSecretSpans(item.value));
    }
    if (file.isKey && file.content.find("-----BEGIN") == std::string::npos)
        values_.Add(file.content);
    LearnSpans(file.content, FindFileSecretSpans(file.content, places_));
}

void Secrets::LearnSpans(std::string_view text, const std::vector<SecretSpan>& spans)
{
    for (const SecretSpan& span : spans) {
        if (!span.isGuess)
            values_.Add(text.substr(span.begin, span.end - span.begin));
    }
}

void Secrets::AddCandidates(const File& file, const std::vector<Item>& items, Candidates& candidates)
{
    for (const std::string_view text : FindCipherTexts(file.content))
        candidates.try_emplace(std::string(text));
    for (const Item& item : items) {
        if (HasCipherForm(item.value))
            candidates[item.value].emplace(*item.position, item.name);
    }
    if (file.format == FileFormat::Xml)
        return;
    const std::string_view text = file.content;
    std::optional<std::string_view> section;
    for (std::size_t begin = FirstIniLine(text); begin < text.size();) {
        const IniLine line = ReadIniLine(text, begin);
        begin = line.end;
        if (line.kind == IniLineKind::Section)
            section = line.name;
        else if (line.kind == IniLineKind::Key && section && HasCipherForm(line.value))
            candidates[std::string(line.value)].emplace(*section, line.name);
    }
}

void Secrets::Decipher(const StepsClient& steps, const Candidates& candidates)
{
    std::set<std::string> texts;
    for (const auto& [value, plain] : values_.All())
        texts.insert(value);
    for (const auto& [value, places] : candidates)
        texts.insert(value);
    constexpr std::ptrdiff_t kMostAtOnce = 50000;
    for (auto begin = texts.begin(); begin != texts.end();) {
        const auto end = std::next(begin, std::min(kMostAtOnce, std::distance(begin, texts.end())));
        const std::vector<std::string> some(begin, end);
        const std::vector<std::vector<std::string>> answers = steps.Decipher(some);
        for (std::size_t i = 0; i < some.size(); ++i)
            values_.AddPlain(some[i], answers[i]);
        begin = end;
    }
}

void Secrets::FillSearches(const std::string& firmwareNames)
{
    std::set<std::string> all;
    std::set<std::string> elsewhere;
    for (const auto& [value, plain] : values_.All()) {
        const bool isOrdinary = value.size() < SecretSearch::kShortestInWords || defaults_.count(value) != 0;
        for (const std::string& form : XmlForms(value)) {
            all.insert(form);
            if (!isOrdinary)
                elsewhere.insert(form);
        }
    }
    for (const std::string& form : all)
        inReports_.Add(form);
    for (const std::string& form : elsewhere)
        elsewhere_.Add(form);
    const std::set<std::string> names = elsewhere_.FindIn(firmwareNames);
    for (const std::string& form : elsewhere) {
        if (names.count(form) == 0)
            inNames_.Add(form);
    }
}

std::string Secrets::Mask(const std::string& value) const
{
    return secrecy_ == Secrecy::Revealed || value.empty() ? value : kMask;
}

std::string Secrets::Hide(const std::string& value) const
{
    return secrecy_ == Secrecy::Revealed ? value : HideWith(elsewhere_, value);
}

std::string Secrets::HideInReport(const std::string& text) const
{
    return secrecy_ == Secrecy::Revealed ? text : HideWith(inReports_, text);
}

std::string Secrets::HideInName(const std::string& name) const
{
    return secrecy_ == Secrecy::Revealed ? name : inNames_.Hide(name);
}

std::string Secrets::HideInFile(FileFormat format, const std::string& content)
{
    if (secrecy_ == Secrecy::Revealed)
        return content;
    // The place of a short secret in XML is not seen in the text.
    const SecretSearch& search = format == FileFormat::Xml ? inReports_ : elsewhere_;
    return ReplaceSpans(
        content, FindFileSecretSpans(content, places_),
        [&search](const std::string& part) { return search.Hide(part); },
        [this](const std::string& value) { return NumberedMask(value); });
}

std::string Secrets::NumberedMask(const std::string& value)
{
    const int number = numbers_.try_emplace(value, static_cast<int>(numbers_.size()) + 1).first->second;
    return kMask + ("(" + std::to_string(number) + ")");
}
