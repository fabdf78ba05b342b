// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "entryList.h"

#include "configMapper.h"
#include "phoneFacts.h"
#include "phoneImage/toolError.h"

namespace
{

std::set<Place> PlacesOf(const CIniConfigInfo& entry, int accounts)
{
    if (!entry.perAccount)
        return {MakePlace(entry.filePath, entry.section, entry.key)};
    std::set<Place> places;
    for (int number = 0; number < accounts; ++number)
        places.insert(MakePlace(AccountFilePath(number), entry.section, entry.key));
    return places;
}

} // namespace

EntryList ReadEntryList(const std::string& path)
{
    CConfigMapper mapper(path.c_str());
    std::list<CIniConfigInfo*> entries;
    if (mapper.GetAllEncryptConfig(entries) == 0)
        throw ToolError("the list of enciphered entries does not load: " + path);
    EntryList list;
    for (const CIniConfigInfo* entry : entries) {
        if (entry->active) {
            list.converted.merge(PlacesOf(*entry, kConvertedAccounts));
            list.secrets.merge(PlacesOf(*entry, kLastAccount + 1));
        } else {
            list.plain.merge(PlacesOf(*entry, kLastAccount + 1));
        }
    }
    return list;
}
