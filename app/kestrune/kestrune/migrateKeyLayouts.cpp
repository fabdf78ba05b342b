// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "migrateKeyLayouts.h"

#include <pugixml.hpp>

#include "phoneFacts.h"
#include "pugiXmlFile.h"

namespace
{

/// CDATA, escapes, line ends and attribute white space, converted and normalised; comments and declarations are
/// dropped.
constexpr unsigned int kParseOptions = pugi::parse_cdata | pugi::parse_escapes | pugi::parse_eol |
                                       pugi::parse_wconv_attribute | pugi::parse_wnorm_attribute;
static_assert(kParseOptions == 0xF4);

enum class AddedAttribute { None, PickupValue, HistoryType, XmlPhonebook };

AddedAttribute AttributeFor(int keyType)
{
    switch (keyType) {
    case 14:
    case 16:
    case 55:
        return AddedAttribute::PickupValue;
    case 28:
        return AddedAttribute::HistoryType;
    case 22:
    case 45:
    case 46:
    case 47:
    case 54:
        return AddedAttribute::XmlPhonebook;
    default:
        return AddedAttribute::None;
    }
}

/// The attribute to write; appended after the others if the element does not have it. Null if memory is exhausted.
pugi::xml_attribute FindOrAppend(pugi::xml_node element, const char* name)
{
    const pugi::xml_attribute present = element.attribute(name);
    return present.empty() ? element.append_attribute(name) : present;
}

/// @return false if there is no memory for the attribute
bool MigrateItem(pugi::xml_node item)
{
    const pugi::xml_attribute type = item.attribute("type");
    if (type.empty())
        return true;
    const AddedAttribute added = AttributeFor(type.as_int(0));
    pugi::xml_node data = item.child("itemdata");
    if (added == AddedAttribute::None || data.empty())
        return true;

    if (added == AddedAttribute::PickupValue)
        return FindOrAppend(data, "pickup_value").set_value(data.attribute("extension").as_string(""));
    const int line = data.attribute("line").as_int(0);
    return FindOrAppend(data, added == AddedAttribute::HistoryType ? "history_type" : "xml_phonebook").set_value(line);
}

} // namespace

void MigrateKeyLayouts()
{
    pugi::xml_document document;
    for (const XmlFile& layout : kKeyLayouts)
        (void)MigrateKeyLayout(document, layout.path, layout.root); // the other layouts do not depend on it
}

bool MigrateKeyLayout(pugi::xml_document& document, const char* path, const char* rootName)
{
    if (LoadPugiXmlFile(document, path, kParseOptions) == 0)
        return false;
    const pugi::xml_node root = document.child(rootName);
    if (root.empty())
        return false;
    for (pugi::xml_node item = root.child("item"); !item.empty(); item = item.next_sibling("item")) {
        if (!MigrateItem(item))
            return false; // leaving the file unchanged is better than losing an attribute
    }
    return SavePugiXmlFile(document, path, "\t", pugi::format_indent) != 0;
}
