// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fileRules.h"

#include <algorithm>
#include <pugixml.hpp>
#include <set>
#include <string_view>
#include <tinyxml.h>

#include "phoneImage/printable.h"
#include "pugiXmlFile.h"
#include "quotedText.h"
#include "translateConfigTable.h"

namespace
{

/// Looks for the first element that names an attribute twice.
class DoubledAttributeWalk : public pugi::xml_tree_walker
{
public:
    const std::string& Name() const { return name_; }

private:
    bool for_each(pugi::xml_node& node) override
    {
        std::set<std::string_view> names;
        for (const pugi::xml_attribute& attribute : node.attributes()) {
            if (!names.insert(attribute.name()).second) {
                name_ = attribute.name();
                return false;
            }
        }
        return true;
    }

    std::string name_;
};

/// The program's library says no more than that an element is wrong. The other one takes doubled attributes and can be
/// asked for them.
///
/// @return the name, or an empty text when that is not what is wrong
std::string FindDoubledAttribute(const std::string& path)
{
    pugi::xml_document document;
    DoubledAttributeWalk walk;
    if (LoadPugiXmlFile(document, path.c_str(), pugi::parse_default) != 0)
        (void)document.traverse(walk); // whether it stopped early shows in the name
    return walk.Name();
}

void CheckTextBetweenRecords(const TiXmlElement& root, Findings& findings)
{
    for (const TiXmlNode* child = root.FirstChild(); child != nullptr; child = child->NextSibling()) {
        if (child->ToText() != nullptr)
            findings.push_back({"KT018", child->Row(), "the text between records is never read"});
    }
}

} // namespace

Finding ExplainLoadFailure(const TiXmlDocument& document, const std::string& path, const std::string& errorDesc)
{
    const int line = std::max(document.ErrorRow(), 1); // no line is known when the file was refused unparsed
    if (document.ErrorId() == TiXmlBase::TIXML_ERROR_PARSING_ELEMENT) {
        const std::string name = FindDoubledAttribute(path);
        if (!name.empty())
            return {"KT003", line, "attribute " + QuotedText(name) + " is given twice: the table does not load"};
    }
    return {"KT001", line, "the table does not load, and no value is moved: " + Printable(errorDesc)};
}

void CheckFile(const TiXmlDocument& table, Findings& findings)
{
    const TiXmlElement* root = table.RootElement();
    if (FirstTableRecord(table) == nullptr)
        findings.push_back({"KT002", root == nullptr ? 1 : root->Row(), "the table has no record: the pass ends"});
    if (root == nullptr)
        return;
    CheckTextBetweenRecords(*root, findings);
    for (const TiXmlElement* other = root->NextSiblingElement(); other != nullptr; other = other->NextSiblingElement())
        findings.push_back(
            {"KT019", other->Row(),
             "element " + QuotedText(other->ValueStr()) + " follows the root: its records are never read"});
}

void CheckRecordContent(const TiXmlElement& record, Findings& findings)
{
    for (const TiXmlNode* child = record.FirstChild(); child != nullptr; child = child->NextSibling()) {
        if (child->ToElement() == nullptr && child->ToText() == nullptr)
            continue;
        const std::string what = child->ToElement() == nullptr ? "text" : "element " + QuotedText(child->ValueStr());
        findings.push_back(
            {"KT018", child->Row(), what + " within the record is never read: records have attributes only"});
        return; // the others have the same cause
    }
}
