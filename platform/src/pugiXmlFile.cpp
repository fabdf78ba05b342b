// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "pugiXmlFile.h"

#include <iterator>
#include <pugixml.hpp>
#include <string>

#include "fileBytes.h"
#include "fileReplacement.h"
#include "xmlGuard.h"

namespace
{

/// Checks the limits of `xmlGuard.h`. pugixml neither parses nor iterates by recursion, so the loaded document can be
/// checked.
class LimitWalk : public pugi::xml_tree_walker
{
public:
    bool IsBeyondLimit() const { return isBeyondLimit_; }

private:
    bool for_each(pugi::xml_node& node) override
    {
        if (node.type() != pugi::node_element)
            return true;
        const auto attributes = std::distance(node.attributes_begin(), node.attributes_end());
        // The root's depth is 0 here.
        isBeyondLimit_ = ++elements_ > kMostElements || depth() >= kDeepestElement || attributes > kMostAttributes;
        return !isBeyondLimit_;
    }

    int elements_ = 0;
    bool isBeyondLimit_ = false;
};

class StringWriter : public pugi::xml_writer
{
public:
    bool IsWhole() const { return isWhole_; }
    const std::string& Bytes() const { return bytes_; }

private:
    void write(const void* data, std::size_t size) override
    {
        isWhole_ = isWhole_ && bytes_.size() + size <= kLargestPrintedXml;
        if (isWhole_)
            bytes_.append(static_cast<const char*>(data), size);
    }

    std::string bytes_;
    bool isWhole_ = true;
};

} // namespace

int LoadPugiXmlFile(pugi::xml_document& document, const char* path, unsigned int options)
{
    document.reset();
    std::string bytes;
    if (ReadFile(path, bytes) != ReadResult::Done)
        return 0;

    LimitWalk walk;
    const bool isLoaded = document.load_buffer(bytes.data(), bytes.size(), options, pugi::encoding_auto);
    if (isLoaded)
        (void)document.traverse(walk);
    if (isLoaded && !walk.IsBeyondLimit())
        return 1;
    document.reset();
    return 0;
}

int SavePugiXmlFile(const pugi::xml_document& document, const char* path, const char* indent, unsigned int flags)
{
    StringWriter writer;
    document.save(writer, indent, flags, pugi::encoding_auto);
    return writer.IsWhole() && ReplaceFile(path, writer.Bytes());
}
