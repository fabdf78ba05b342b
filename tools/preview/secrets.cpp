#include "secrets.h"

#include <algorithm>
#include <cctype>

#include "secretSpans.h"

namespace
{

/// Shorter ones are hidden in their places alone: a text that lost every "1" could not be read, and would tell more.
constexpr std::size_t kShortestHidden = 4;

/// Ones from here on are hidden inside of words as well.
constexpr std::size_t kShortestInWords = 6;

bool EndsIn(std::string_view text, std::string_view ending)
{
    return text.size() >= ending.size() && text.substr(text.size() - ending.size()) == ending;
}

bool IsWordCharacter(char character)
{
    return std::isalnum(static_cast<unsigned char>(character)) != 0 || (static_cast<unsigned char>(character) & 0x80) != 0;
}

bool IsWord(const std::string& text, std::size_t begin, std::size_t end)
{
    return (begin == 0 || !IsWordCharacter(text[begin - 1])) && (end == text.size() || !IsWordCharacter(text[end]));
}

void ReplaceAll(std::string& text, const std::string& value)
{
    for (std::size_t at = text.find(value); at != std::string::npos; at = text.find(value, at)) {
        if (value.size() < kShortestInWords && !IsWord(text, at, at + value.size())) {
            ++at;
            continue;
        }
        text.replace(at, value.size(), kMask);
        at += sizeof kMask - 1;
    }
}

/// As it stands in an XML file.
std::string EscapeForXml(const std::string& value)
{
    std::string text;
    for (const char character : value) {
        switch (character) {
        case '&':
            text += "&amp;";
            break;
        case '<':
            text += "&lt;";
            break;
        case '>':
            text += "&gt;";
            break;
        case '"':
            text += "&quot;";
            break;
        case '\'':
            text += "&apos;";
            break;
        default:
            text += character;
        }
    }
    return text;
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
    if (EndsIn(path, ".key") && content.find("-----BEGIN") == std::string::npos)
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

void Secrets::Decipher(const PhoneHelper& helper)
{
    std::vector<std::string> texts;
    for (const auto& [value, layers] : values_)
        texts.push_back(value);
    const std::vector<std::vector<std::string>> answers = helper.Decipher(texts);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        values_[texts[i]] = answers[i];
        for (std::size_t layer = 0; layer < answers[i].size(); ++layer) {
            auto& inner = values_[answers[i][layer]];
            inner.assign(answers[i].begin() + static_cast<std::ptrdiff_t>(layer) + 1, answers[i].end());
        }
    }
    std::set<std::string> shown;
    for (const auto& [value, layers] : values_) {
        if (value.size() >= kShortestHidden)
            shown.insert({value, EscapeForXml(value)});
    }
    byLength_.assign(shown.begin(), shown.end());
    std::stable_sort(byLength_.begin(), byLength_.end(),
                     [](const std::string& one, const std::string& other) { return one.size() > other.size(); });
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

std::string Secrets::Hide(std::string text) const
{
    if (secrecy_ == Secrecy::Revealed)
        return text;
    if (text.size() >= kShortestHidden && values_.count(text) != 0)
        return kMask;
    for (const std::string& value : byLength_)
        ReplaceAll(text, value);
    return text;
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
