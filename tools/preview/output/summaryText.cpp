// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "summaryText.h"

#include <utf8.h>

const char* KindWord(ChangeKind kind)
{
    switch (kind) {
    case ChangeKind::Added:
        return "added";
    case ChangeKind::Changed:
        return "changed";
    case ChangeKind::Emptied:
        return "emptied";
    case ChangeKind::Removed:
        return "removed";
    }
    return "";
}

std::string CountWords(const Counts& counts)
{
    std::vector<std::string> words;
    for (const ChangeKind kind : kChangeKinds) {
        if (counts[kind] != 0)
            words.push_back(std::to_string(counts[kind]) + " " + KindWord(kind));
    }
    return words.empty() ? "none" : Join(words);
}

std::string Join(const std::vector<std::string>& words, const char* separator)
{
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : separator) + word;
    return text;
}

std::string ValueWords(const std::string& value)
{
    constexpr const char* blank = "\\x20";
    if (value.empty())
        return "(empty)";
    if (value == " ")
        return blank;
    std::string words = value;
    if (words.back() == ' ')
        words.replace(words.size() - 1, 1, blank);
    if (words.front() == ' ')
        words.replace(0, 1, blank);
    return words;
}

std::size_t LengthOf(const std::string& text)
{
    return static_cast<std::size_t>(utf8::distance(text.begin(), text.end()));
}

std::string WordsOf(const ShownWarning& warning)
{
    return std::string(SeverityName(warning.severity)) + " " + warning.rule;
}

std::map<std::string, std::vector<std::string>> OwnForgotten(const std::vector<ShownForgottenKey>& keys)
{
    std::map<std::string, std::vector<std::string>> sections;
    for (const ShownForgottenKey& key : keys) {
        if (key.isOwn)
            sections[key.file + " [" + key.section + "]"].push_back(key.key);
    }
    return sections;
}

std::string SummaryLine(const Preview& preview)
{
    return "files: " + CountWords(CountFiles(preview.files)) + "; keys: " + CountWords(CountValues(preview.files)) +
           "; warnings: " + (preview.warnings.empty() ? "none" : std::to_string(preview.warnings.size()));
}
