// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "summaryText.h"

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

std::string SummaryLine(const Preview& preview)
{
    return "files: " + CountWords(CountFiles(preview.files)) + "; keys: " + CountWords(CountValues(preview.files)) +
           "; warnings: " + (preview.warnings.empty() ? "none" : std::to_string(preview.warnings.size()));
}
