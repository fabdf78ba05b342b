// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The descriptions of documents that are refused.

#include "xmlFile.h"

#include <gtest/gtest.h>
#include <tinyxml.h>

#include "scratchFolder.h"
#include "xmlText.h"

namespace
{

/// The description of the failed load of a file with that content, or "" if it loads.
std::string Failure(const std::string& text)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("a.xml"), text);
    TiXmlDocument document;
    std::string errorDesc;
    const bool isLoaded = LoadXmlFile(document, folder.Path("a.xml").c_str(), &errorDesc) != 0;
    EXPECT_EQ(isLoaded, errorDesc.empty());
    return errorDesc;
}

} // namespace

TEST(BundledXmlFile, ARefusalNamesTheLimit)
{
    EXPECT_EQ(Failure(Repeat("<a>", 200) + Repeat("</a>", 200)), "");
    EXPECT_EQ(Failure(Repeat("<a>", 201) + Repeat("</a>", 201)), "Document nested too deep.");
    EXPECT_EQ(Failure(Element("a", "", Repeat("<b/>", 99999))), "");
    EXPECT_EQ(Failure(Element("a", "", Repeat("<b/>", 100000))), "Document has too many elements.");

    std::string attributes;
    for (int number = 1; number <= 256; ++number)
        attributes += " a" + std::to_string(number) + "='v'";
    EXPECT_EQ(Failure("<a" + attributes + "/>"), "");
    EXPECT_EQ(Failure("<a" + attributes + " b='v'/>"), "Element has too many attributes.");

    const std::string frame = "<a></a>";
    const std::string filling(4194304 - frame.size(), 'x');
    EXPECT_EQ(Failure("<a>" + filling + "</a>"), "");
    EXPECT_EQ(Failure("<a>" + filling + "x</a>"), "Document too large.");
    EXPECT_EQ(Failure("<a></a><!--" + filling + "-->"), "Document too large.");
}

TEST(BundledXmlFile, ADocumentThatPrintsToMoreThan16MebibytesIsNotSaved)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("a.xml");
    constexpr std::size_t kMost = std::size_t{16} << 20;
    const std::string frame = "<a></a>\n";
    for (const std::size_t size : {kMost, kMost + 1}) {
        WriteBytes(path, "old");
        TiXmlDocument document;
        auto* element = new TiXmlElement("a");
        element->LinkEndChild(new TiXmlText(std::string(size - frame.size(), 'x').c_str()));
        document.LinkEndChild(element);
        const bool isSaved = size == kMost;
        EXPECT_EQ(SaveXmlFile(document, path.c_str()) != 0, isSaved);
        EXPECT_EQ(ReadBytes(path).size(), isSaved ? kMost : 3u);
    }
}

TEST(BundledXmlFile, NestedEmptyElementsThatPrintToManyTimesTheirSizeAreNotSaved)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("a.xml");
    struct Row {
        int elements;
        bool isSaved;
    };
    for (const Row& row : {Row{20000, true}, Row{50000, false}}) {
        WriteBytes(path, Repeat("<a>", 199) + Repeat("<b/>", row.elements) + Repeat("</a>", 199));
        TiXmlDocument document;
        ASSERT_NE(LoadXmlFile(document, path.c_str()), 0);
        WriteBytes(path, "old");
        EXPECT_EQ(SaveXmlFile(document, path.c_str()) != 0, row.isSaved) << row.elements;
        EXPECT_EQ(ReadBytes(path) == "old", !row.isSaved) << row.elements;
    }
}
