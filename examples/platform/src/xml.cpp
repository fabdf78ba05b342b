// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// XML files through TinyXML and pugixml, within limits that keep a damaged file from exhausting the device.

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <pugixml.hpp>
#include <string_view>
#include <tinyxml.h>

#include "fileReplacement.h"
#include "files.h"
#include "integerText.h"
#include "pugiXmlFile.h"
#include "xmlFile.h"

namespace
{

constexpr std::size_t kLargestFile = 4 * 1024 * 1024;
constexpr int kDeepestElement = 200;
constexpr int kMostElements = 100000;
constexpr int kMostAttributes = 256;

/// The limited quantities of a document.
struct Extent {
    int depth = 0;
    int elements = 0;
    int attributes = 0; ///< the maximum of one element

    bool IsWithinLimits() const
    {
        return depth <= kDeepestElement && elements <= kMostElements && attributes <= kMostAttributes;
    }
};

/// The approximate number of a tag's attributes: "=" outside of quoted values. `position` moves past the tag.
///
/// @return whether the tag closes its own element
bool SkipTag(std::string_view text, std::size_t& position, int& attributes)
{
    char quote = '\0';
    attributes = 0;
    for (; position < text.size(); ++position) {
        const char c = text[position];
        if (quote != '\0') {
            quote = c == quote ? '\0' : quote;
        } else if ((c == '"' || c == '\'') && text.find_last_not_of(" \t\r\n", position - 1) != text.npos &&
                   text[text.find_last_not_of(" \t\r\n", position - 1)] == '=') {
            quote = c;
        } else if (c == '=') {
            ++attributes;
        } else if (c == '>') {
            return text[position - 1] == '/';
        }
    }
    return false;
}

/// Markup that contains no elements, and its end.
struct Opaque {
    std::string_view begin;
    std::string_view end;
};

constexpr Opaque kOpaque[] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", ">"}, {"<!", ">"}};

/// TinyXML recurses for each level and searches an element's attributes one by one, so both are counted before it
/// parses the text. The count is approximate, since TinyXML reads odd text in its own way: it only rejects documents
/// that would exhaust the stack or the time, and `Measure` checks the exact limits in the loaded document. A text that
/// is made to mislead this count gets past it; the project's own library counts as TinyXML does.
bool IsSafeToLoad(std::string_view text)
{
    constexpr int kSafeDepth = 10 * kDeepestElement;
    constexpr int kSafeAttributes = 10 * kMostAttributes;
    int depth = 0;
    std::size_t position = 0;
    while ((position = text.find('<', position)) != text.npos) {
        const std::string_view rest = text.substr(position);
        const auto* opaque = std::find_if(std::begin(kOpaque), std::end(kOpaque), [rest](const Opaque& each) {
            return rest.substr(0, each.begin.size()) == each.begin;
        });
        if (opaque != std::end(kOpaque)) {
            position = text.find(opaque->end, position + opaque->begin.size());
            continue;
        }
        ++position;
        int attributes = 0;
        if (rest.substr(0, 2) == "</")
            --depth;
        else if (!SkipTag(text, position, attributes))
            ++depth;
        if (depth > kSafeDepth || attributes > kSafeAttributes)
            return false;
    }
    return true;
}

Extent Measure(const TiXmlNode& parent, int depth)
{
    Extent extent;
    extent.depth = depth;
    for (const TiXmlElement* child = parent.FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        int attributes = 0;
        for (const TiXmlAttribute* each = child->FirstAttribute(); each != nullptr; each = each->Next())
            ++attributes;
        const Extent inner = Measure(*child, depth + 1);
        extent.depth = std::max(extent.depth, inner.depth);
        extent.elements += 1 + inner.elements;
        extent.attributes = std::max({extent.attributes, attributes, inner.attributes});
    }
    return extent;
}

/// Uses pugixml's own traversal, which is not recursive.
struct PugiExtent : pugi::xml_tree_walker {
    bool for_each(pugi::xml_node& node) override
    {
        if (node.type() != pugi::node_element)
            return true;
        const auto attributes = node.attributes();
        extent.depth = std::max(extent.depth, depth() + 1);
        extent.elements += 1;
        extent.attributes =
            std::max(extent.attributes, static_cast<int>(std::distance(attributes.begin(), attributes.end())));
        return true;
    }
    Extent extent;
};

/// A stream that writes to memory.
class MemoryStream
{
public:
    MemoryStream() : stream_(open_memstream(&bytes_, &size_)) {}
    ~MemoryStream()
    {
        if (stream_ != nullptr)
            (void)std::fclose(stream_);
        std::free(bytes_);
    }
    MemoryStream(const MemoryStream&) = delete;
    MemoryStream& operator=(const MemoryStream&) = delete;

    std::FILE* Stream() const { return stream_; }

    /// @return false if a write failed because memory ran out
    bool Finish() { return std::fflush(stream_) == 0 && std::ferror(stream_) == 0; }
    std::string_view Bytes() const { return {bytes_, size_}; }

private:
    char* bytes_ = nullptr;
    std::size_t size_ = 0;
    std::FILE* stream_;
};

struct StringWriter : pugi::xml_writer {
    void write(const void* data, std::size_t size) override { bytes.append(static_cast<const char*>(data), size); }
    std::string bytes;
};

/// @return the reason why the file does not load; null if it loads
const char* Load(TiXmlDocument& document, const char* path)
{
    std::string bytes;
    if (!ReadFile(path, bytes))
        return "Failed to open file";
    if (bytes.size() > kLargestFile || !IsSafeToLoad(bytes))
        return "Too much for this device.";
    bytes.append(4, '\0'); // TinyXML reads past the end of a text that ends inside a character
    std::FILE* stream = fmemopen(bytes.data(), bytes.size(), "rb");
    if (stream == nullptr)
        return "Failed to open file";
    const bool isLoaded = document.LoadFile(stream);
    (void)std::fclose(stream);
    if (!isLoaded)
        return document.ErrorDesc();
    return Measure(document, 0).IsWithinLimits() ? nullptr : "Too much for this device.";
}

} // namespace

int LoadXmlFile(TiXmlDocument& document, const char* path, std::string* errorDesc)
{
    const char* failure = Load(document, path);
    if (failure != nullptr && errorDesc != nullptr)
        *errorDesc = failure;
    return failure == nullptr ? 1 : 0;
}

int SaveXmlFile(const TiXmlDocument& document, const char* path, const char* sourcePath)
{
    MemoryStream memory;
    if (memory.Stream() == nullptr || !document.SaveFile(memory.Stream()) || !memory.Finish())
        return 0;
    return (sourcePath == nullptr ? ReplaceFile(path, memory.Bytes())
                                  : ReplaceDerivedFile(path, memory.Bytes(), sourcePath))
               ? 1
               : 0;
}

std::string TinyXml_GetStringAttr(const TiXmlElement* element, const char* name, const char* defaultText)
{
    const char* text = element->Attribute(name);
    return text == nullptr ? defaultText : text;
}

int TinyXml_GetIntAttr(const TiXmlElement* element, const char* name, int defaultValue)
{
    const char* text = element->Attribute(name);
    return text == nullptr ? defaultValue : ParseInt32(text);
}

bool QueryXmlFlag(const TiXmlElement* element, const char* name, bool& flag)
{
    const char* text = element->Attribute(name);
    if (text == nullptr || *text == '\0') // TinyXML aborts the process on an empty one
        return false;
    return element->QueryBoolAttribute(name, &flag) == TIXML_SUCCESS;
}

int LoadPugiXmlFile(pugi::xml_document& document, const char* path, unsigned int options)
{
    std::string bytes;
    document.reset();
    if (!ReadFile(path, bytes) || bytes.size() > kLargestFile)
        return 0;
    PugiExtent walker;
    if (document.load_buffer(bytes.data(), bytes.size(), options) && document.traverse(walker) &&
        walker.extent.IsWithinLimits())
        return 1;
    document.reset();
    return 0;
}

int SavePugiXmlFile(const pugi::xml_document& document, const char* path, const char* indent, unsigned int flags)
{
    StringWriter writer;
    document.save(writer, indent, flags);
    return ReplaceFile(path, writer.bytes) ? 1 : 0;
}
