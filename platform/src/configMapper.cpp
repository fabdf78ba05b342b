// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "configMapper.h"

#include <tinyxml.h>

#include "xmlFile.h"

namespace
{

std::unique_ptr<CIniConfigInfo> ReadRecord(const TiXmlElement& element)
{
    auto record = std::make_unique<CIniConfigInfo>();
    record->name = element.ValueStr();
    record->defaultText = TinyXml_GetStringAttr(&element, "default", "");
    record->filePath = TinyXml_GetStringAttr(&element, "file", "");
    record->section = TinyXml_GetStringAttr(&element, "section", "");
    record->key = TinyXml_GetStringAttr(&element, "key", "");
    // A text that is not a boolean leaves the flag at its default.
    (void)QueryXmlFlag(&element, "perAccount", record->perAccount);
    (void)QueryXmlFlag(&element, "active", record->active);
    return record;
}

} // namespace

int CConfigMapper::GetAllEncryptConfig(std::list<CIniConfigInfo*>& entries)
{
    TiXmlDocument document;
    if (LoadXmlFile(document, path_) == 0)
        return 0;
    const TiXmlElement* root = document.RootElement();
    const TiXmlElement* element = root == nullptr ? nullptr : root->FirstChildElement();
    for (; element != nullptr; element = element->NextSiblingElement()) {
        records_.push_back(ReadRecord(*element));
        entries.push_back(records_.back().get());
    }
    return 1;
}
