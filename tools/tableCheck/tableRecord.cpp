// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "tableRecord.h"

#include <filesystem>
#include <tinyxml.h>

#include "phoneImage/normalPath.h"
#include "phoneImage/printable.h"
#include "translateConfigTable.h"

Place MakePlace(const std::string& file, const std::string& section, const std::string& key)
{
    return {NormalPath(file), section, key};
}

int TableRecord::Line() const
{
    return element->Row();
}

TableRecord ReadTableRecord(const TiXmlElement& element)
{
    TableRecord record = {};
    record.element = &element;
    const char* file = element.Attribute("srcFile");
    const char* section = element.Attribute("srcSec");
    const char* key = element.Attribute("srcKey");
    if (file != nullptr && section != nullptr && key != nullptr)
        record.source = MakePlace(file, section, key);

    Place& to = record.destination;
    GetDstInfo(element, record.destinationFile, to.section, to.key, record.isEnciphered);
    to = MakePlace(record.destinationFile, to.section, to.key);
    return record;
}

bool NamesNoFile(const std::string& path)
{
    const std::string name = std::filesystem::path(path).lexically_normal().filename().string();
    return name.empty() || name == "." || name == "..";
}

int AttributeLine(const TiXmlElement& element, std::string_view name)
{
    for (const TiXmlAttribute* attribute = element.FirstAttribute(); attribute != nullptr;
         attribute = attribute->Next()) {
        if (name == attribute->Name())
            return attribute->Row();
    }
    return element.Row();
}

std::string Describe(const Place& place)
{
    return Printable("[" + place.section + "] " + place.key + " of " + place.file);
}
