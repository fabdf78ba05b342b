// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "xmlElement.h"

#include <tinyxml.h>

#include "trackedNew.h"

TiXmlElement* AppendElement(TiXmlNode& parent, const char* name)
{
    auto* element = new ("../../../app/kestrune/xmlTranslator", __LINE__) TiXmlElement(name);
    if (element != nullptr)
        parent.LinkEndChild(element);
    return element;
}
