// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "items.h"

#include <map>
#include <pugixml.hpp>

#include "iniText.h"
#include "xmlGuard.h"

namespace
{

std::vector<Item> ReadIniItems(std::string_view text)
{
    std::vector<Item> items;
    std::map<std::pair<std::string_view, std::string_view>, int> counts;
    std::string_view section;
    bool isInSection = false;
    for (std::size_t begin = FirstIniLine(text); begin < text.size();) {
        const IniLine line = ReadIniLine(text, begin);
        begin = line.end;
        if (line.kind == IniLineKind::Section) {
            section = line.name;
            isInSection = true;
        } else if (line.kind == IniLineKind::Key && isInSection) {
            const std::string key(line.name);
            items.push_back(
                {std::string(section), key, ++counts[{section, line.name}], std::string(line.value), {key}});
        }
    }
    return items;
}

/// The attributes that name what an element's value is, and those that then hold the value.
constexpr const char* kNamingAttributes[] = {"name", "key", "id", "param", "parameter", "srcKey", "dstKey"};
constexpr const char* kValueAttributes[] = {"value", "val", "default", kElementText};

bool IsOneOf(const char* const* begin, const char* const* end, std::string_view name)
{
    for (; begin != end; ++begin) {
        if (name == *begin)
            return true;
    }
    return false;
}

class XmlReader
{
public:
    /// @return none for a document that is nested too deep
    std::optional<std::vector<Item>> Read(const pugi::xml_node& root)
    {
        ReadElement(root, root.name(), {root.name()});
        if (isTooDeep_)
            return std::nullopt;
        return std::move(items_);
    }

private:
    void ReadElement(const pugi::xml_node& element, const std::string& path, const std::vector<std::string>& names)
    {
        if (names.size() > static_cast<std::size_t>(kDeepestElement)) {
            isTooDeep_ = true;
            return;
        }
        for (const pugi::xml_attribute& attribute : element.attributes())
            Add(element, path, attribute.name(), attribute.value(), names);
        std::string text;
        std::map<std::string_view, int> counts;
        for (const pugi::xml_node& child : element.children()) {
            if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
                text += child.value();
            if (child.type() != pugi::node_element)
                continue;
            std::vector<std::string> childNames = names;
            childNames.emplace_back(child.name());
            ReadElement(child, path + "/" + child.name() + "[" + std::to_string(++counts[child.name()]) + "]",
                        childNames);
        }
        if (text.find_first_not_of(" \t\r\n") != std::string::npos)
            Add(element, path, kElementText, text, names);
    }

    void Add(const pugi::xml_node& element, const std::string& path, const char* name, const std::string& value,
             std::vector<std::string> names)
    {
        names.emplace_back(name);
        if (IsOneOf(std::begin(kValueAttributes), std::end(kValueAttributes), name)) {
            for (const char* naming : kNamingAttributes)
                names.emplace_back(element.attribute(naming).value());
        }
        items_.push_back({path, name, 1, value, std::move(names)});
    }

    std::vector<Item> items_;
    bool isTooDeep_ = false;
};

std::optional<std::vector<Item>> ReadXmlItems(const std::string& content)
{
    pugi::xml_document document;
    if (content.empty() || RefuseSize(content.size()) != nullptr || RefuseXml(content) != nullptr ||
        !document.load_buffer(content.data(), content.size()) || document.document_element().empty())
        return std::nullopt;
    return XmlReader().Read(document.document_element());
}

} // namespace

FileFormat FormatOf(std::string_view path, std::string_view content)
{
    if (content.find('\0') != std::string_view::npos)
        return FileFormat::Binary;
    if (path.ends_with(".ini") || path.ends_with(".cfg"))
        return FileFormat::Ini;
    return path.ends_with(".xml") ? FileFormat::Xml : FileFormat::Text;
}

std::optional<std::vector<Item>> ReadItems(FileFormat format, const std::string& content)
{
    if (format == FileFormat::Ini)
        return ReadIniItems(content);
    return format == FileFormat::Xml ? ReadXmlItems(content) : std::nullopt;
}
