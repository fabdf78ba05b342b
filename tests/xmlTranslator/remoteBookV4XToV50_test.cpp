// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "remoteBookV4XToV50.h"

#include <filesystem>
#include <gtest/gtest.h>

#include "bundledPlatform.h"
#include "translation.h"
#include "xmlText.h"

namespace
{

const std::string kEnter = "chTraceStack: enter RemoteBookV4XToV50\n";
const std::string kLeave = "chTraceStack: leave RemoteBookV4XToV50\n";

constexpr char kAddedItem[] = "    <item name=\"\" url=\"\" />\n";

struct Books : Translation {
    Books() : Translation(&RemoteBookV4XToV50, "remotebook.xml", "remote_phonebook_list.xml") {}
};

/// The new file for an old one with this content.
std::string Translated(const std::string& oldText)
{
    return Books().Translated(oldText, kEnter + kLeave);
}

std::string NewFile(const std::string& items)
{
    return "<root_remote_phonebook>\n" + items + "</root_remote_phonebook>\n";
}

} // namespace

TEST(RemoteBookV4XToV50, AnEmptyListGetsSixItems)
{
    for (const char* text :
         {"<RemotePhoneBook/>", "<RemotePhoneBook></RemotePhoneBook>", "<RemotePhoneBook>\r\n</RemotePhoneBook>\r\n"})
        EXPECT_EQ(Translated(text), NewFile(Repeat(kAddedItem, 6))) << text;
}

TEST(RemoteBookV4XToV50, AZeroCharacterStaysOneAndIsWrittenInTwoDigits)
{
    const std::string after = "<root_remote_phonebook a=\"b&#x00;c\">\n"
                              "    <item name=\"d&#x00;e\" url=\"&#x00;\" />\n"
                              "    <item>f&#x00;g</item>\n" +
                              Repeat(kAddedItem, 4) + "</root_remote_phonebook>\n";
    EXPECT_EQ(Translated("<RemotePhoneBook a='b&#0;c'><item name='d&#x0;e' url='&#00;'/><item>f&#0;g</item>"
                         "</RemotePhoneBook>"),
              after);
}

TEST(RemoteBookV4XToV50, AShortListIsFilledUpToSix)
{
    for (int count = 0; count <= 9; ++count)
        EXPECT_EQ(Translated(Element("RemotePhoneBook", "", Repeat("<item name='a' url='b'/>", count))),
                  NewFile(Repeat("    <item name=\"a\" url=\"b\" />\n", count) + Repeat(kAddedItem, 6 - count)))
            << count;
}

TEST(RemoteBookV4XToV50, ItemsAreAddedBehindAllOtherChildren)
{
    EXPECT_EQ(
        Translated("<RemotePhoneBook><item name='1'/><Item name='x'/><note>text</note><item name='2'/><!-- last -->"
                   "<group><item name='deeper'/></group></RemotePhoneBook>"),
        NewFile("    <item name=\"1\" />\n"
                "    <Item name=\"x\" />\n"
                "    <note>text</note>\n"
                "    <item name=\"2\" />\n"
                "    <!-- last -->\n"
                "    <group>\n"
                "        <item name=\"deeper\" />\n"
                "    </group>\n" +
                Repeat(kAddedItem, 4)));
}

TEST(RemoteBookV4XToV50, EightItemsStayInOrder)
{
    std::string oldItems;
    std::string newItems;
    for (int number = 1; number <= 8; ++number) {
        oldItems += Element("item", "name='" + std::to_string(number) + "' url='u'");
        newItems += "    <item name=\"" + std::to_string(number) + "\" url=\"u\" />\n";
    }
    EXPECT_EQ(Translated(Element("RemotePhoneBook", "", oldItems)), NewFile(newItems));
}

TEST(RemoteBookV4XToV50, ItemsKeepWhateverAttributesTheyHave)
{
    EXPECT_EQ(Translated("<?xml version='1.0' encoding='UTF-8'?>\n<RemotePhoneBook>"
                         "<item URL='http://books.example.net/a?b=1&amp;c=2' Name='B\xC3\xBC&quot;cher'/>"
                         "<item/><item name='%s' pin='0'>text</item></RemotePhoneBook>"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n" +
                  NewFile("    <item URL=\"http://books.example.net/a?b=1&amp;c=2\" Name='B\xC3\xBC&quot;cher' />\n"
                          "    <item />\n"
                          "    <item name=\"%s\" pin=\"0\">text</item>\n" +
                          Repeat(kAddedItem, 3)));
}

TEST(RemoteBookV4XToV50, AllElseInTheDocumentStays)
{
    EXPECT_EQ(Translated("\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
                         "<!DOCTYPE books>\n"
                         "<!-- shared & old -->\n"
                         "<Head a='1'/>\n"
                         "<RemotePhoneBook owner='it' version=\"2\">\n"
                         "  <!-- first -->\n"
                         "  <item name=\"a\" url=\"b\"/>\n"
                         "</RemotePhoneBook>\n"
                         "<RemotePhoneBook/>\n"
                         "<!-- end -->\n"),
              "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\" ?>\n"
              "<!DOCTYPE books>\n"
              "<!-- shared & old -->\n"
              "<Head a=\"1\" />\n"
              "<root_remote_phonebook owner=\"it\" version=\"2\">\n"
              "    <!-- first -->\n"
              "    <item name=\"a\" url=\"b\" />\n" +
                  Repeat(kAddedItem, 5) +
                  "</root_remote_phonebook>\n"
                  "<RemotePhoneBook />\n"
                  "<!-- end -->\n");
}

TEST(RemoteBookV4XToV50, ASecondRunWritesTheSameOverWhateverIsThere)
{
    Books books;
    WriteBytes(books.oldPath, "<RemotePhoneBook><item name='a'/></RemotePhoneBook>");
    WriteBytes(books.newPath, Repeat("edited by hand ", 100));
    for (int run = 0; run < 2; ++run) {
        EXPECT_EQ(books.Translate(), 1);
        EXPECT_EQ(ReadBytes(books.newPath), NewFile("    <item name=\"a\" />\n" + Repeat(kAddedItem, 5)));
    }
}

TEST(RemoteBookV4XToV50, ANullPathIsAFailureWithoutAWord)
{
    const Books books;
    WriteBytes(books.oldPath, "<RemotePhoneBook/>");
    testing::internal::CaptureStderr();
    EXPECT_EQ(RemoteBookV4XToV50(nullptr, books.newPath.c_str()), 0);
    EXPECT_EQ(RemoteBookV4XToV50(books.oldPath.c_str(), nullptr), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), kEnter + kLeave + kEnter + kLeave);
    EXPECT_EQ(books.FileCount(), 1u);
}

TEST(RemoteBookV4XToV50, OnAFailureNothingIsWritten)
{
    struct Row {
        const char* oldText; // null for no old file
        const char* report;  // in addition to the scopes
    };
    const Row rows[] = {
        {nullptr, ""},
        {"", "etlTrace 2: Fail to load remote phonebook !!\n"},
        {"<RemotePhoneBook>", "etlTrace 2: Fail to load remote phonebook !!\n"},
        {"<RemotePhoneBook><item></RemotePhoneBook>", "etlTrace 2: Fail to load remote phonebook !!\n"},
        {"<root_remote_phonebook><item name='a'/></root_remote_phonebook>", ""},
        {"<remotePhoneBook/>", ""},
        {"<Other><RemotePhoneBook/></Other>", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.oldText == nullptr ? "no file" : row.oldText);
        Books books;
        if (row.oldText != nullptr)
            WriteBytes(books.oldPath, row.oldText);
        EXPECT_EQ(books.Translate(), 0);
        EXPECT_EQ(books.reports, kEnter + row.report + kLeave);
        EXPECT_FALSE(std::filesystem::exists(books.newPath));

        WriteBytes(books.newPath, "before");
        EXPECT_EQ(books.Translate(), 0);
        EXPECT_EQ(ReadBytes(books.newPath), "before");
    }
}

TEST(RemoteBookV4XToV50, AFailedSaveIsAFailureWithoutAWord)
{
    Books books;
    WriteBytes(books.oldPath, "<RemotePhoneBook/>");
    for (const std::string& path : {books.folder.Path("missing/remote_phonebook_list.xml"), books.folder.Path()}) {
        EXPECT_EQ(books.Translate(path), 0) << path;
        EXPECT_EQ(books.reports, kEnter + kLeave) << path;
    }
    EXPECT_EQ(ReadBytes(books.oldPath), "<RemotePhoneBook/>");
    EXPECT_EQ(books.FileCount(), 1u);
}

TEST(RemoteBookV4XToV50, AListThatWouldPrintToMoreThan16MebibytesIsNotSaved)
{
    if (!kHasBundledPlatform)
        GTEST_SKIP() << "rests on the bundled library's limit";
    // 201 KB, whose printed form has 40 MB: each empty element is on a separate line, indented by its depth.
    const std::string text =
        "<RemotePhoneBook>" + Repeat("<a>", 198) + Repeat("<b/>", 50000) + Repeat("</a>", 198) + "</RemotePhoneBook>";
    Books books;
    WriteBytes(books.oldPath, text);
    EXPECT_EQ(books.Translate(), 0);
    EXPECT_FALSE(std::filesystem::exists(books.newPath));
    WriteBytes(books.newPath, "before");
    EXPECT_EQ(books.Translate(), 0);
    EXPECT_EQ(ReadBytes(books.newPath), "before");
    EXPECT_EQ(ReadBytes(books.oldPath), text);
}
