// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "items.h"

#include <algorithm>
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
    std::string_view sectionName;
    std::shared_ptr<const std::string> section;
    for (std::size_t begin = FirstIniLine(text); begin < text.size();) {
        const IniLine line = ReadIniLine(text, begin);
        begin = line.end;
        if (line.kind == IniLineKind::Section) {
            sectionName = line.name;
            section = std::make_shared<const std::string>(line.name);
        } else if (line.kind == IniLineKind::Key && section != nullptr) {
            items.push_back({section, std::string(line.name), ++counts[{sectionName, line.name}],
                             std::string(line.value), WhatNameSays(line.name)});
        }
    }
    return items;
}

/// The attributes that name what an element's value is, and those that then hold the value.
constexpr const char* kNamingAttributes[] = {"name", "key", "id", "param", "parameter", "srcKey", "dstKey"};
constexpr std::string_view kValueAttributes[] = {"value", "val", "default", kElementText};

constexpr std::size_t kLargestPaths = std::size_t{16}
                                      << 20; ///< of all elements together; each begins with its parent's

class XmlReader
{
public:
    std::optional<std::vector<Item>> Read(const pugi::xml_node& root)
    {
        ReadElement(root, root.name(), NameSays::Nothing, /*level=*/1);
        if (isTooMuch_)
            return std::nullopt;
        return std::move(items_);
    }

private:
    void ReadElement(const pugi::xml_node& element, std::string pathText, NameSays around, int level)
    {
        pathsSize_ += pathText.size();
        isTooMuch_ = isTooMuch_ || level > kDeepestElement || pathsSize_ > kLargestPaths;
        if (isTooMuch_)
            return;
        const auto path = std::make_shared<const std::string>(std::move(pathText));
        const NameSays names = std::max(around, WhatNameSays(element.name()));
        for (const pugi::xml_attribute& attribute : element.attributes())
            Add(element, path, attribute.name(), attribute.value(), names);
        std::string text;
        std::map<std::string_view, int> counts;
        for (const pugi::xml_node& child : element.children()) {
            if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
                text += child.value();
            if (child.type() == pugi::node_element)
                ReadElement(child, *path + "/" + child.name() + "[" + std::to_string(++counts[child.name()]) + "]",
                            names, level + 1);
        }
        if (text.find_first_not_of(" \t\r\n") != std::string::npos)
            Add(element, path, kElementText, std::move(text), names);
    }

    void Add(const pugi::xml_node& element, const std::shared_ptr<const std::string>& path, const char* name,
             std::string value, NameSays names)
    {
        names = std::max(names, WhatNameSays(name));
        if (std::find(std::begin(kValueAttributes), std::end(kValueAttributes), name) != std::end(kValueAttributes)) {
            for (const char* naming : kNamingAttributes)
                names = std::max(names, WhatNameSays(element.attribute(naming).value()));
        }
        items_.push_back({path, name, 1, std::move(value), names});
    }

    std::vector<Item> items_;
    std::size_t pathsSize_ = 0;
    bool isTooMuch_ = false;
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

std::optional<std::vector<Item>> ReadItems(FileFormat format, const std::string& content)
{
    if (format == FileFormat::Ini)
        return ReadIniItems(content);
    return format == FileFormat::Xml ? ReadXmlItems(content) : std::nullopt;
}
