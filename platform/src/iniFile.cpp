// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "iniFile.h"

#include "fileBytes.h"
#include "fileReplacement.h"
#include "iniText.h"
#include "integerText.h"

std::string iniDocument::GetTextValue(const phraseConstTextA& section, const phraseConstTextA& key,
                                      const phraseConstTextA& defaultText) const
{
    return std::string(FindIniValue(Text(), section.view(), key.view()).value_or(defaultText.view()));
}

int iniDocument::GetIntValue(const phraseConstTextA& section, const phraseConstTextA& key, int defaultValue) const
{
    const auto value = FindIniValue(Text(), section.view(), key.view());
    return value ? ParseInt32(std::string(*value).c_str()) : defaultValue;
}

int iniDocument::SetTextValue(const phraseConstTextA& section, const phraseConstTextA& key,
                              const phraseConstTextA& text)
{
    ApplyKeyChanges();
    if (!SetIniValue(text_, section.view(), key.view(), text.view()))
        return 0;
    DropObjects();
    return 1;
}

pointer_chain_pNext* iniDocument::objects()
{
    if (hasObjects_)
        return &head_;

    pointer_chain_pNext* lastSection = &head_;
    pointer_chain_pNext* lastKey = nullptr;
    for (std::size_t begin = FirstIniLine(text_); begin < text_.size();) {
        const IniLine line = ReadIniLine(text_, begin);
        if (line.kind == IniLineKind::Section) {
            sections_.push_back(std::make_unique<iniSection>());
            lastSection->InsertNext(*sections_.back());
            lastSection = sections_.back().get();
            lastKey = sections_.back()->objects();
        } else if (line.kind == IniLineKind::Key && lastKey != nullptr) {
            const auto valueBegin = static_cast<std::size_t>(line.value.data() - text_.data());
            auto& keys = sections_.back()->keys_;
            keys.push_back(std::make_unique<iniKey>(line.value, valueBegin));
            lastKey->InsertNext(*keys.back());
            lastKey = keys.back().get();
        }
        begin = line.end;
    }
    hasObjects_ = true;
    return &head_;
}

const std::string& iniDocument::Text() const
{
    ApplyKeyChanges();
    return text_;
}

void iniDocument::Assign(std::string&& text)
{
    DropObjects();
    text_ = std::move(text);
}

void iniDocument::ApplyKeyChanges() const
{
    std::string changed;
    std::size_t copied = 0;
    for (const auto& section : sections_) {
        for (const auto& key : section->keys_) {
            changed.append(text_, copied, key->begin_ - copied);
            copied = key->begin_ + key->size_;
            key->begin_ = changed.size();
            changed.append(key->value_);
            key->size_ = key->value_.size();
        }
    }
    if (copied == 0)
        return;
    changed.append(text_, copied);
    text_ = std::move(changed);
}

void iniDocument::DropObjects()
{
    hasObjects_ = false;
    sections_.clear();
    head_.Unlink();
}

iniFile::iniFile(const char* path) : path_(path == nullptr ? "" : path) {}

int iniFile::LoadFromFile(const char* path)
{
    std::string bytes;
    const ReadResult result = path == nullptr ? ReadResult::Missing : ReadFile(path, bytes);
    isUnreadable_ = result == ReadResult::Unreadable || result == ReadResult::TooLarge;
    Assign(std::move(bytes));
    path_ = result == ReadResult::Done ? path : ""; // after a failed load there is no file to save to
    return result == ReadResult::Done;
}

int iniFile::SaveToFile(const char* path)
{
    const char* destination = path == nullptr ? path_.c_str() : path;
    return !isUnreadable_ && *destination != '\0' && ReplaceFile(destination, Text());
}
