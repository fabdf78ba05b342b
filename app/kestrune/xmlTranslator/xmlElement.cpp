// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "xmlElement.h"

#include <tinyxml.h>

#include "trackedNew.h"
#include "xmlFile.h"

int LoadDataFile(TiXmlDocument& document, const char* path, std::string* errorDesc)
{
    document.SetTabSize(0);
    return LoadXmlFile(document, path, errorDesc);
}

TiXmlElement* AppendElement(TiXmlNode& parent, const char* name)
{
    auto* element = new ("../../../app/kestrune/xmlTranslator", __LINE__) TiXmlElement(name);
    if (element != nullptr)
        parent.LinkEndChild(element);
    return element;
}
