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
                             std::string(line.value), WhatNameSays(line.name), section});
        }
    }
    return items;
}

/// The attributes that name what an element's value is, and those that then hold the value.
constexpr const char* kNamingAttributes[] = {"name", "key", "id", "param", "parameter", "srcKey", "dstKey"};
constexpr std::string_view kValueAttributes[] = {"value", "val", "default", kElementText};

constexpr std::size_t kLargestPaths = std::size_t{16}
                                      << 20; ///< of all elements together; each begins with its parent's

/// The attributes that say which record an element is, the surest first: those of the phone's own files, and usual ones.
constexpr const char* kIdentifyingAttributes[] = {"id",           "id_name",    "title",  "name",        "display_name",
                                                  "sLocalRename", "sGroupName", "Prefix", "DialNowRule", "rule"};
constexpr std::size_t kLongestIdentity = 64;

/// @param names  what the names of the element and those around it say
/// @return such as "[\"Ann\"]"; empty if the element has only its number
std::string IdentityOf(const pugi::xml_node& element, NameSays names)
{
    for (const char* name : kIdentifyingAttributes) {
        const std::string value = element.attribute(name).value();
        if (value.empty())
            continue;
        // Names are shown where a value would be hidden, and the text is a part of a path.
        const bool isUsable = value.size() <= kLongestIdentity && value.find_first_of("\"=:<") == std::string::npos &&
                              !IsSecretValue(std::max(names, WhatNameSays(name)), value);
        return isUsable ? "[\"" + value + "\"]" : std::string();
    }
    return std::string();
}

class XmlReader
{
public:
    std::optional<std::vector<Item>> Read(const pugi::xml_node& root)
    {
        ReadElement(root, root.name(), root.name(), NameSays::Nothing, /*level=*/1);
        if (isTooMuch_)
            return std::nullopt;
        return std::move(items_);
    }

private:
    /// A path as an item has it, and the same with numbers only.
    struct Path {
        std::shared_ptr<const std::string> group;
        std::shared_ptr<const std::string> position;
    };

    void ReadElement(const pugi::xml_node& element, std::string pathText, const std::string& positionText,
                     NameSays around, int level)
    {
        pathsSize_ += std::max(pathText.size(), positionText.size());
        isTooMuch_ = isTooMuch_ || level > kDeepestElement || pathsSize_ > kLargestPaths;
        if (isTooMuch_)
            return;
        const auto group = std::make_shared<const std::string>(std::move(pathText));
        const Path path = {group, positionText == *group ? group : std::make_shared<const std::string>(positionText)};
        const NameSays names = std::max(around, WhatNameSays(element.name()));
        for (const pugi::xml_attribute& attribute : element.attributes())
            Add(element, path, attribute.name(), attribute.value(), names);
        std::string text;
        std::map<std::string, int> counts; // of tags, and of tags with an identity
        for (const pugi::xml_node& child : element.children()) {
            if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
                text += child.value();
            if (child.type() != pugi::node_element)
                continue;
            const std::string tag = child.name();
            const std::string number = tag + "[" + std::to_string(++counts[tag]) + "]";
            const std::string identity = IdentityOf(child, std::max(names, WhatNameSays(child.name())));
            const int same = identity.empty() ? 0 : ++counts[tag + identity];
            ReadElement(child,
                        *path.group + "/" + (identity.empty() ? number : tag + identity) +
                            (same > 1 ? "(" + std::to_string(same) + ")" : ""),
                        *path.position + "/" + number, names, level + 1);
        }
        if (text.find_first_not_of(" \t\r\n") != std::string::npos)
            Add(element, path, kElementText, std::move(text), names);
    }

    void Add(const pugi::xml_node& element, const Path& path, const char* name, std::string value, NameSays names)
    {
        names = std::max(names, WhatNameSays(name));
        if (std::find(std::begin(kValueAttributes), std::end(kValueAttributes), name) != std::end(kValueAttributes)) {
            for (const char* naming : kNamingAttributes)
                names = std::max(names, WhatNameSays(element.attribute(naming).value()));
        }
        items_.push_back({path.group, name, 1, std::move(value), names, path.position});
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
