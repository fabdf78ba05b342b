// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// XML files through pugixml: the same results as its own `load_file` and `save_file`, but safely.

#include "pugiXmlFile.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <pugixml.hpp>
#include <sys/stat.h>

#include "scratchFolder.h"
#include "xmlText.h"

namespace
{

constexpr unsigned int kOptions = 0xF4;

/// The text in 16 or 32-bit units, after a byte order mark if the text has one.
std::string Wide(const std::u32string& text, int unitBytes, bool isBigEndian)
{
    std::string bytes;
    for (const char32_t character : text) {
        for (int i = 0; i < unitBytes; ++i) {
            const int shift = 8 * (isBigEndian ? unitBytes - 1 - i : i);
            bytes.push_back(static_cast<char>(character >> shift & 0xff));
        }
    }
    return bytes;
}

/// Documents of every kind, and some texts that are not documents.
std::vector<std::string> Documents()
{
    const std::u32string wide = U"<a b=\"\u00e4\u20ac\">\u0416</a>";
    const std::u32string markedWide = U"\ufeff" + wide;
    return {
        "<a/>",
        "<a b=\"1\" c='2'>\r\n  <d/>text<e>x</e>\r\n</a>",
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE a>\n<!-- comment -->\n<a><?pi x?><!-- c --><b/></a>\n",
        "<a><![CDATA[<&>]]> &lt;&amp;&#x41;&#65;&unknown; </a>",
        "<a b=\" x\t\ny&#10;&quot;&apos;z  \" c=\"&#x9;\"/>",
        "<a b=\"1\" b=\"2\"/><a/>",
        "\xEF\xBB\xBF<a b=\"\xc3\xa4\"/>",
        "<a b=\"\xff\xfe\x01\">\xc3</a>",
        "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?><a b=\"\xe4\"/>",
        Wide(wide, 2, /*isBigEndian=*/false),
        Wide(wide, 2, /*isBigEndian=*/true),
        Wide(markedWide, 2, /*isBigEndian=*/false),
        Wide(markedWide, 2, /*isBigEndian=*/true),
        Wide(markedWide, 4, /*isBigEndian=*/false),
        Wide(markedWide, 4, /*isBigEndian=*/true),
        "text before<a/>text behind",
        std::string("<a>\0</a>", 8),
        std::string("<a/>\0<b/>", 9),
        "",
        " \n",
        "no markup",
        "<",
        "<a",
        "<a b",
        "<a b=\"",
        "<a></b>",
        "<a><b></a></b>",
        "</a>",
        "<a/",
        "<!-- open",
        "<!-- c -->",
        "<?xml version=\"1.0\"?>",
        "\xEF\xBB\xBF",
        "\xff\xfe",
        std::string(300, '\xff'),
    };
}

/// The result of the library's own functions on paths: whether the bytes load, and the bytes that are saved.
struct Reference {
    bool isLoaded;
    std::string saved;
};

Reference OwnLoadAndSave(const ScratchFolder& folder, const std::string& bytes, const char* indent, unsigned int flags)
{
    const std::string path = folder.Path("reference.xml");
    WriteBytes(path, bytes);
    pugi::xml_document document;
    const bool isLoaded = document.load_file(path.c_str(), kOptions, pugi::encoding_auto);
    if (!isLoaded)
        return {false, ""};
    EXPECT_TRUE(document.save_file(path.c_str(), indent, flags, pugi::encoding_auto));
    return {true, ReadBytes(path)};
}

/// Compares both functions with the library's own.
void ExpectAsItsOwn(const ScratchFolder& folder, const std::string& bytes, const char* indent = "\t",
                    unsigned int flags = pugi::format_indent)
{
    SCOPED_TRACE(testing::PrintToString(bytes));
    const Reference reference = OwnLoadAndSave(folder, bytes, indent, flags);
    const std::string path = folder.Path("file.xml");
    WriteBytes(path, bytes);
    pugi::xml_document document;
    document.append_child("earlier");
    EXPECT_EQ(LoadPugiXmlFile(document, path.c_str(), kOptions) != 0, reference.isLoaded);
    EXPECT_FALSE(document.child("earlier"));
    if (!reference.isLoaded) {
        EXPECT_FALSE(document.first_child()) << "not empty after a failure";
        return;
    }
    EXPECT_EQ(SavePugiXmlFile(document, path.c_str(), indent, flags), 1);
    EXPECT_EQ(ReadBytes(path), reference.saved);
}

bool Loads(const ScratchFolder& folder, const std::string& bytes)
{
    const std::string path = folder.Path("limit.xml");
    WriteBytes(path, bytes);
    pugi::xml_document document;
    const bool isLoaded = LoadPugiXmlFile(document, path.c_str(), kOptions) != 0;
    EXPECT_EQ(static_cast<bool>(document.first_child()), isLoaded);
    return isLoaded;
}

std::string Nested(int levels)
{
    return Repeat("<a>", levels) + Repeat("</a>", levels);
}

std::string WithAttributes(int count)
{
    std::string text = "<a><b";
    for (int i = 0; i < count; ++i)
        text += " n" + std::to_string(i) + "=\"\"";
    return text + "/></a>";
}

} // namespace

TEST(PugiXmlFile, LoadsAndSavesAsTheLibraryDoesOnPaths)
{
    const ScratchFolder folder;
    for (const std::string& bytes : Documents())
        ExpectAsItsOwn(folder, bytes);
}

TEST(PugiXmlFile, LoadsAndSavesAsTheLibraryDoesWhereverTheFileIsCutOff)
{
    const ScratchFolder folder;
    for (const std::string& bytes : Documents()) {
        for (std::size_t size = 0; size < bytes.size() && size < 120; ++size)
            ExpectAsItsOwn(folder, bytes.substr(0, size));
    }
}

TEST(PugiXmlFile, IndentAndFlagsAreTheCallers)
{
    const ScratchFolder folder;
    for (const unsigned int flags : {pugi::format_indent, pugi::format_raw, pugi::format_default,
                                     pugi::format_indent | pugi::format_write_bom, pugi::format_no_declaration}) {
        for (const char* indent : {"\t", "  ", ""})
            ExpectAsItsOwn(folder, "<a b=\"1\"><c><d/>x</c><e/></a>", indent, flags);
    }
}

TEST(PugiXmlFile, OptionsAreTheCallers)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("file.xml");
    WriteBytes(path, "<!-- c --><a b=\" &lt; \"/>");
    pugi::xml_document document;
    ASSERT_NE(LoadPugiXmlFile(document, path.c_str(), kOptions), 0);
    EXPECT_EQ(document.first_child().type(), pugi::node_element);
    EXPECT_STREQ(document.child("a").attribute("b").value(), "<");
    ASSERT_NE(LoadPugiXmlFile(document, path.c_str(), pugi::parse_comments), 0);
    EXPECT_EQ(document.first_child().type(), pugi::node_comment);
    EXPECT_STREQ(document.child("a").attribute("b").value(), " &lt; ");
}

TEST(PugiXmlFile, OnlyRegularFilesLoadAndOpeningNeverBlocks)
{
    const ScratchFolder folder;
    ASSERT_EQ(mkfifo(folder.Path("fifo").c_str(), 0600), 0);
    std::filesystem::create_directory(folder.Path("folder"));
    std::filesystem::create_symlink("loop", folder.Path("loop"));
    std::filesystem::create_symlink("missing", folder.Path("dangling"));
    for (const char* name : {"fifo", "folder", "loop", "dangling", "missing", "missing/file.xml"}) {
        SCOPED_TRACE(name);
        pugi::xml_document document;
        document.append_child("earlier");
        EXPECT_EQ(LoadPugiXmlFile(document, folder.Path(name).c_str(), kOptions), 0);
        EXPECT_FALSE(document.first_child());
    }
    pugi::xml_document document;
    EXPECT_EQ(LoadPugiXmlFile(document, "/dev/zero", kOptions), 0);
}

TEST(PugiXmlFile, ALinkIsFollowedWhenLoadingAndStaysWhenSaving)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("file.xml"), "<a/>");
    std::filesystem::create_symlink("file.xml", folder.Path("link.xml"));
    pugi::xml_document document;
    ASSERT_NE(LoadPugiXmlFile(document, folder.Path("link.xml").c_str(), kOptions), 0);
    EXPECT_EQ(SavePugiXmlFile(document, folder.Path("link.xml").c_str(), "\t", pugi::format_indent), 1);
    EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("link.xml")));
    EXPECT_EQ(ReadBytes(folder.Path("file.xml")), "<?xml version=\"1.0\"?>\n<a />\n");
}

TEST(PugiXmlFile, TheTwoHundredthLevelLoadsAndTheNextDoesNot)
{
    const ScratchFolder folder;
    EXPECT_TRUE(Loads(folder, Nested(200)));
    EXPECT_FALSE(Loads(folder, Nested(201)));
    EXPECT_FALSE(Loads(folder, "<b/>" + Nested(201)));
    EXPECT_FALSE(Loads(folder, Nested(200000)));
    EXPECT_TRUE(Loads(folder, "<a>" + Repeat(Nested(199), 100) + "</a>"));
    // A comment, a processing instruction and a text are not elements.
    EXPECT_TRUE(Loads(folder, Repeat("<a>", 200) + "<!-- <a> --><?b?>text" + Repeat("</a>", 200)));
}

TEST(PugiXmlFile, FourMebibytesLoadAndOneByteMoreDoesNot)
{
    const ScratchFolder folder;
    constexpr int kLimit = 4 * 1024 * 1024;
    EXPECT_TRUE(Loads(folder, "<a>" + std::string(kLimit - 7, 'x') + "</a>"));
    EXPECT_FALSE(Loads(folder, "<a>" + std::string(kLimit - 6, 'x') + "</a>"));
}

TEST(PugiXmlFile, AHundredThousandElementsLoadAndOneMoreDoesNot)
{
    const ScratchFolder folder;
    EXPECT_TRUE(Loads(folder, "<a>" + Repeat("<b/>", 99999) + "</a>"));
    EXPECT_FALSE(Loads(folder, "<a>" + Repeat("<b/>", 100000) + "</a>"));
    EXPECT_TRUE(Loads(folder, Repeat("<b/>", 100000)));
    EXPECT_FALSE(Loads(folder, Repeat("<b/>", 100001)));
}

TEST(PugiXmlFile, TwoHundredFiftySixAttributesLoadAndOneMoreDoesNot)
{
    const ScratchFolder folder;
    EXPECT_TRUE(Loads(folder, WithAttributes(256)));
    EXPECT_FALSE(Loads(folder, WithAttributes(257)));
}

TEST(PugiXmlFile, ASaveThatFailsReportsItAndLeavesNothing)
{
    const ScratchFolder folder;
    std::filesystem::create_directory(folder.Path("folder"));
    pugi::xml_document document;
    document.append_child("a");
    EXPECT_EQ(SavePugiXmlFile(document, folder.Path("missing/file.xml").c_str(), "\t", pugi::format_indent), 0);
    EXPECT_EQ(SavePugiXmlFile(document, folder.Path("folder").c_str(), "\t", pugi::format_indent), 0);
    EXPECT_FALSE(std::filesystem::exists(folder.Path("missing")));
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path("folder")));
    EXPECT_FALSE(std::filesystem::exists(folder.Path("folder.kestrune-new")));
}

TEST(PugiXmlFile, ASaveKeepsThePermissionsAndLeavesNoTemporaryFile)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("file.xml");
    WriteBytes(path, "<a/>");
    chmod(path.c_str(), 0604);
    pugi::xml_document document;
    ASSERT_NE(LoadPugiXmlFile(document, path.c_str(), kOptions), 0);
    EXPECT_EQ(SavePugiXmlFile(document, path.c_str(), "\t", pugi::format_indent), 1);
    struct stat status = {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777u, 0604u);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1);
}
