// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <list>
#include <string>

#include "iniObject.h"
#include "phraseConstTextA.h"

/// A configuration file as a list of lines. docs/platform.md describes what each operation has to do; this class
/// differs from the project's own only in its data members, which is why it needs its own header.
class iniFile
{
public:
    explicit iniFile(const char* path = nullptr) : path_(path == nullptr ? "" : path) {}
    iniFile(const iniFile&) = delete;
    iniFile& operator=(const iniFile&) = delete;

    [[nodiscard]] int LoadFromFile(const char* path);
    [[nodiscard]] int SaveToFile(const char* path) const;

    std::string GetTextValue(const phraseConstTextA& section, const phraseConstTextA& key,
                             const phraseConstTextA& defaultText) const;
    int GetIntValue(const phraseConstTextA& section, const phraseConstTextA& key, int defaultValue) const;
    [[nodiscard]] int SetTextValue(const phraseConstTextA& section, const phraseConstTextA& key,
                                   const phraseConstTextA& text);

    /// The chain is valid until the next call or load.
    pointer_chain_pNext* objects();

private:
    const IniLine* FindKey(std::string_view section, std::string_view key) const;
    std::string LineEnd() const;
    std::list<IniLine>::iterator AddSection(std::string_view section);
    void AddKey(std::string_view section, std::string_view key, std::string_view text);

    std::string path_;
    std::string mark_; ///< the byte order mark, if there is one
    std::list<IniLine> lines_;
    pointer_chain_pNext head_;
    std::list<iniSection> sections_;
};
