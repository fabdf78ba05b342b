// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// A translation table with arbitrary bytes: each record's destination and value, in both forms.

#include <cstdio>
#include <string>
#include <tinyxml.h>

#include "convertPasswordValue.h"
#include "fuzzInput.h"
#include "scratchFolder.h"
#include "translateConfigTable.h"
#include "xmlFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static std::FILE* const silent = std::freopen("/dev/null", "w", stdout);
    Require(silent != nullptr);
    const std::string path = FuzzFile("table.xml");
    WriteBytes(path, InputText(data, size));

    TiXmlDocument table;
    if (LoadXmlFile(table, path.c_str()) == 0)
        return 0;
    const TiXmlElement* root = table.RootElement();
    const TiXmlElement* record = root == nullptr ? nullptr : root->FirstChildElement();
    for (; record != nullptr; record = record->NextSiblingElement()) {
        std::string file;
        std::string section;
        std::string key;
        bool bThisKeyEncrypt = false;
        GetDstInfo(*record, file, section, key, bThisKeyEncrypt);
        const std::string plain = GetSrcValue(*record, /*wantEnciphered=*/false);
        (void)GetSrcValue(*record, /*wantEnciphered=*/true);

        // Every value that a record may name, here the key's own name: plain, enciphered, and plain again.
        std::string enciphered;
        std::string again;
        ConvertPasswordValue(&key, enciphered, /*wantEnciphered=*/true);
        std::string twice;
        ConvertPasswordValue(&enciphered, twice, /*wantEnciphered=*/true);
        ConvertPasswordValue(&enciphered, again, /*wantEnciphered=*/false);
        Require(twice == enciphered || enciphered.size() > 103);
        if (key.size() < 160)
            Require(again == key || twice == key);
    }
    return 0;
}
