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

/// The description of the failed load of a file with that content, or "" when it loads.
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
