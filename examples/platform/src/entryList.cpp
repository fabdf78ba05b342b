// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include <tinyxml.h>

#include "configMapper.h"
#include "xmlFile.h"

int CConfigMapper::GetAllEncryptConfig(std::list<CIniConfigInfo*>& entries)
{
    TiXmlDocument document;
    if (LoadXmlFile(document, path_) == 0 || document.RootElement() == nullptr)
        return 0;
    for (const TiXmlElement* element = document.RootElement()->FirstChildElement(); element != nullptr;
         element = element->NextSiblingElement()) {
        auto entry = std::make_unique<CIniConfigInfo>();
        entry->filePath = TinyXml_GetStringAttr(element, "file", "");
        entry->section = TinyXml_GetStringAttr(element, "section", "");
        entry->key = TinyXml_GetStringAttr(element, "key", "");
        entry->defaultText = TinyXml_GetStringAttr(element, "default", "");
        (void)QueryXmlFlag(element, "perAccount", entry->perAccount); // if absent, the default of the record stays
        (void)QueryXmlFlag(element, "active", entry->active);
        entries.push_back(entry.get());
        records_.push_back(std::move(entry));
    }
    return 1;
}
