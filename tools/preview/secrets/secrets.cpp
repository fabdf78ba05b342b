// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "secrets.h"

#include <algorithm>

#include "secretSpans.h"

namespace
{

void Replace(std::string& text, std::string_view character, std::string_view entity)
{
    for (std::size_t at = text.find(character); at != std::string::npos; at = text.find(character, at + entity.size()))
        text.replace(at, character.size(), entity);
}

/// As it stands in an XML file: between tags, and in attributes of either library.
std::vector<std::string> XmlForms(std::string value)
{
    Replace(value, "&", "&amp;");
    Replace(value, "<", "&lt;");
    Replace(value, ">", "&gt;");
    std::vector<std::string> forms = {value};
    Replace(value, "\"", "&quot;");
    forms.push_back(value);
    Replace(value, "'", "&apos;");
    forms.push_back(value);
    return forms;
}

std::string_view Trim(std::string_view text)
{
    constexpr std::string_view kSpace = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(kSpace);
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(kSpace) - begin + 1);
}

} // namespace

Secrets::Secrets(const PhoneLists& lists, Secrecy secrecy) : places_(lists), secrecy_(secrecy)
{
    for (const ListedEntry& entry : lists.entries)
        LearnValue(entry.defaultText);
}

void Secrets::Learn(const Snapshot& snapshot)
{
    for (const auto& [path, file] : snapshot) {
        if (file.kind == PhoneFile::Kind::File && learnt_.insert(file.content).second)
            LearnFile(path, *file.content);
    }
}

void Secrets::LearnFile(const std::string& path, const std::string& content)
{
    const FileFormat format = FormatOf(path, content);
    const auto items = ReadItems(format, content);
    if (items) {
        for (const Item& item : *items) {
            if (places_.IsSecret(item))
                LearnValue(item.value);
        }
    }
    if (path.ends_with(".key") && content.find("-----BEGIN") == std::string::npos)
        LearnValue(content);
    const auto spans = format == FileFormat::Ini ? FindIniSecretSpans(content, places_) : FindSecretSpans(content);
    for (const SecretSpan& span : spans)
        LearnValue(std::string_view(content).substr(span.begin, span.end - span.begin));
}

/// Texts show a value of several lines line by line, without the blanks around them.
void Secrets::LearnValue(std::string_view value)
{
    if (!value.empty())
        values_.try_emplace(std::string(value));
    while (!value.empty()) {
        const std::size_t end = std::min(value.size(), value.find('\n'));
        const std::string_view line = Trim(value.substr(0, end));
        if (!line.empty())
            values_.try_emplace(std::string(line));
        value.remove_prefix(std::min(value.size(), end + 1));
    }
}

void Secrets::Decipher(const StepsClient& helper)
{
    std::vector<std::string> texts;
    for (const auto& [value, layers] : values_)
        texts.push_back(value);
    const std::vector<std::vector<std::string>> answers = helper.Decipher(texts);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        values_[texts[i]] = answers[i];
        for (std::size_t layer = 0; layer < answers[i].size(); ++layer) {
            LearnValue(answers[i][layer]);
            auto& inner = values_[answers[i][layer]];
            inner.assign(answers[i].begin() + static_cast<std::ptrdiff_t>(layer) + 1, answers[i].end());
        }
    }
    std::set<std::string> forms;
    for (const auto& [value, layers] : values_) {
        forms.insert(value);
        for (std::string& form : XmlForms(value))
            forms.insert(std::move(form));
    }
    for (const std::string& form : forms)
        search_.Add(form);
}

int Secrets::LayersOf(const std::string& value) const
{
    const auto found = values_.find(value);
    return found == values_.end() ? 0 : static_cast<int>(found->second.size());
}

std::string Secrets::CoreOf(const std::string& value) const
{
    const auto found = values_.find(value);
    return found == values_.end() || found->second.empty() ? value : found->second.back();
}

std::string Secrets::Relation(const std::optional<std::string>& before, const std::optional<std::string>& after) const
{
    if (!after)
        return "removed";
    const int layers = LayersOf(*after);
    const std::string form = layers == 0 ? "plain" : layers == 1 ? "enciphered" : "enciphered twice";
    if (!before)
        return after->empty() ? "added, empty" : "added, " + form;
    if (after->empty())
        return "emptied";
    if (before->empty())
        return "set, " + form;
    if (CoreOf(*before) != CoreOf(*after) || LayersOf(*before) == layers)
        return "changed, " + form;
    if (layers > 1)
        return "enciphered twice";
    return "same, now " + form;
}

std::string Secrets::Mask(const std::string& value) const
{
    return secrecy_ == Secrecy::Revealed || value.empty() ? value : kMask;
}

std::string Secrets::Hide(const std::string& text) const
{
    return secrecy_ == Secrecy::Revealed ? text : search_.Hide(text);
}

std::string Secrets::NumberedMask(const std::string& value)
{
    const int number = numbers_.try_emplace(value, static_cast<int>(numbers_.size()) + 1).first->second;
    return kMask + ("(" + std::to_string(number) + ")");
}

std::string Secrets::HideInFile(FileFormat format, const std::string& content)
{
    if (secrecy_ == Secrecy::Revealed)
        return content;
    const auto spans = format == FileFormat::Ini ? FindIniSecretSpans(content, places_) : FindSecretSpans(content);
    std::string text;
    std::size_t at = 0;
    for (const SecretSpan& span : spans) {
        text += Hide(content.substr(at, span.begin - at));
        text += NumberedMask(content.substr(span.begin, span.end - span.begin));
        at = span.end;
    }
    text += Hide(content.substr(at));
    return text;
}
