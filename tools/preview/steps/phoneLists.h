// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

/// One entry of the phone's list of enciphered settings.
struct ListedEntry {
    std::string file;
    std::string section;
    std::string key;
    std::string defaultText;
    bool perAccount = false;
    bool isActive = true;
};

/// One record of the phone's translation table, as the program reads it.
struct TableRecord {
    std::string sourceFile;
    std::string sourceSection;
    std::string sourceKey;
    std::string file;
    std::string section;
    std::string key;
    int line = 0;           ///< of the table where it begins, from 1
    bool hasFlag = false;   ///< it has an encrypt flag, of either name and any value
    bool isFlagged = false; ///< it enciphers its value on a locked phone
};

struct PhoneLists {
    std::vector<ListedEntry> entries;
    std::vector<TableRecord> records;
};
