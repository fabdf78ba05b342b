// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "entryListRules.h"

#include "configMapper.h"
#include "phoneFacts.h"
#include "transPasswordFile.h"

bool EntryListRules::Load(const std::string& path)
{
    CConfigMapper mapper(path.c_str());
    std::list<CIniConfigInfo*> entries;
    isLoaded_ = mapper.GetAllEncryptConfig(entries) != 0;
    for (const CIniConfigInfo* entry : entries) {
        if (!entry->active)
            continue;
        if (!entry->perAccount)
            entries_.insert(MakePlace(entry->filePath, entry->section, entry->key));
        for (int number = 0; entry->perAccount && number < kConvertedAccounts; ++number)
            entries_.insert(MakePlace(AccountFilePath(number), entry->section, entry->key));
    }
    return isLoaded_;
}

void EntryListRules::Check(const TableRecord& record, Findings& findings) const
{
    if (!isLoaded_)
        return;
    const bool isListed = entries_.count(record.destination) != 0;
    if (isListed && !record.isEnciphered)
        findings.push_back(
            {"KT013", record.Line(),
             Describe(record.destination) + " is kept enciphered, but the encrypt flag is off: it is written plain"});
    if (!isListed && record.isEnciphered)
        findings.push_back({"KT014", record.Line(),
                            Describe(record.destination) +
                                " is no active entry of the list, but the encrypt flag is on: the password pass will "
                                "never convert it"});
}
