// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "dssKeyV4XToV50.h"

#include <algorithm>
#include <gtest/gtest.h>

#include "translation.h"

namespace
{

const std::string kEnter = "chTraceStack: enter DSSKeyV4XToV50\n";
const std::string kLeave = "chTraceStack: leave DSSKeyV4XToV50\n";

struct Keys : Translation {
    Keys() : Translation(&DSSKeyV4XToV50, "dsskey.xml", "memkey.xml") {}
};

/// The new file for an old one with this content.
std::string Translated(const std::string& oldText)
{
    return Keys().Translated(oldText, kEnter + kLeave);
}

/// A new key that has a type and a line only.
std::string NewKey(const std::string& type, const std::string& line)
{
    return "    <item type=\"" + type + "\">\n        <itemdata line=\"" + line +
           "\" value=\"\" label=\"\" extension=\"\" />\n    </item>\n";
}

std::string NewKeys(const std::string& items)
{
    return "<dsskey>\n" + items + "</dsskey>\n";
}

} // namespace

TEST(DssKeyV4XToV50, AKeyMovesWithItsData)
{
    EXPECT_EQ(Translated("<DssKey>\n"
                         "  <Item Type=\"BLF\">\n"
                         "    <ItemData Extension=\"*8\" Label=\"Desk\" Value=\"201\" Line=\"2\" Other=\"x\" />\n"
                         "  </Item>\n"
                         "  <Item Type=\"\"><ItemData Line=\"0\" Value=\"v\"/></Item>\n"
                         "</DssKey>\n"),
              "<dsskey>\n"
              "    <item type=\"BLF\">\n"
              "        <itemdata line=\"2\" value=\"201\" label=\"Desk\" extension=\"*8\" />\n"
              "    </item>\n"
              "    <item type=\"\">\n"
              "        <itemdata line=\"0\" value=\"v\" label=\"\" extension=\"\" />\n"
              "    </item>\n"
              "</dsskey>\n");
}

TEST(DssKeyV4XToV50, AZeroCharacterEndsAText)
{
    EXPECT_EQ(Translated("<DssKey><Item Type='BLF&#0;x'>"
                         "<ItemData Line='1&#0;2' Value='a&#x0;b' Label='&#0;c' Extension='d&#00;'/></Item>"
                         "<Item Type='Speed Dial&#0;!'><ItemData Line='&#0;7'/></Item>"
                         "<Item Type='N/A&#0;'><ItemData Line='1'/></Item></DssKey>"),
              NewKeys("    <item type=\"BLF\">\n"
                      "        <itemdata line=\"1\" value=\"a\" label=\"\" extension=\"d\" />\n    </item>\n" +
                      NewKey("SpeedDial", "0") + "    <item type=\"N/A\" />\n"));
}

TEST(DssKeyV4XToV50, TwoTypesAreRespelled)
{
    struct Row {
        const char* oldType;
        const char* newType;
    };
    const Row rows[] = {
        {"Speed Dial", "SpeedDial"},
        {"BLF List", "BLFList"},
        {"SpeedDial", "SpeedDial"},
        {"BLFList", "BLFList"},
        {"speed dial", "speed dial"},
        {"Speed  Dial", "Speed  Dial"},
        {" Speed Dial", " Speed Dial"},
        {"Speed Dial ", "Speed Dial "},
        {"BLF list", "BLF list"},
        {"BLFList ", "BLFList "},
        {"n/a", "n/a"},
        {"N/A ", "N/A "},
        {"Line", "Line"},
        {"", ""},
    };
    for (const Row& row : rows)
        EXPECT_EQ(
            Translated(std::string("<DssKey><Item Type='") + row.oldType + "'><ItemData Line='4'/></Item></DssKey>"),
            NewKeys(NewKey(row.newType, "4")))
            << '"' << row.oldType << '"';
}

TEST(DssKeyV4XToV50, AKeyOfTypeNoneKeepsOnlyItsType)
{
    EXPECT_EQ(Translated("<DssKey><Item Type='N/A'><ItemData Line='1' Value='v' Label='l' Extension='e'/></Item>"
                         "<Item Type='N/A'/></DssKey>"),
              NewKeys("    <item type=\"N/A\" />\n    <item type=\"N/A\" />\n"));
}

TEST(DssKeyV4XToV50, AKeyWithoutDataHasLineMinusOne)
{
    EXPECT_EQ(
        Translated("<DssKey><Item Type='Line'/><Item/><Item Type='BLF List'><Itemdata Line='1'/></Item></DssKey>"),
        NewKeys(NewKey("Line", "-1") + NewKey("", "-1") + NewKey("BLFList", "-1")));
}

TEST(DssKeyV4XToV50, TheLineIsAnInteger)
{
    struct Row {
        const char* attribute;
        const char* line;
    };
    const Row rows[] = {
        {"Line='1'", "1"},
        {"Line='-1'", "-1"},
        {"Line='-32'", "-32"},
        {"Line='007'", "7"},
        {"Line='+3'", "3"},
        {"Line=' 5'", "5"},
        {"Line='6th'", "6"},
        {"Line='0x10'", "0"},
        {"", "0"},
        {"line='9'", "0"},
        {"Line=''", "0"},
        {"Line='Auto'", "0"},
        {"Line='2147483647'", "2147483647"},
        {"Line='2147483648'", "2147483647"},
        {"Line='-2147483648'", "-2147483648"},
        {"Line='-2147483649'", "-2147483648"},
        {"Line='99999999999999999999'", "2147483647"},
        {"Line='-99999999999999999999'", "-2147483648"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Translated(std::string("<DssKey><Item Type='BLF'><ItemData ") + row.attribute + "/></Item></DssKey>"),
                  NewKeys(NewKey("BLF", row.line)))
            << row.attribute;
}

TEST(DssKeyV4XToV50, TheFirstEighteenKeysAreKept)
{
    for (const int count : {17, 18, 19, 20}) {
        std::string oldText = "<DssKey>";
        for (int number = 1; number <= count; ++number)
            oldText += "<Item Type='BLF'><ItemData Line='" + std::to_string(number) + "'/></Item>";
        std::string newItems;
        for (int number = 1; number <= std::min(count, 18); ++number)
            newItems += NewKey("BLF", std::to_string(number));
        EXPECT_EQ(Translated(oldText + "</DssKey>"), NewKeys(newItems)) << count;
    }
}

TEST(DssKeyV4XToV50, KeysOfTypeNoneCountTowardsTheEighteen)
{
    std::string oldText = "<DssKey>";
    std::string newItems;
    for (int number = 1; number <= 17; ++number) {
        oldText += "<Item Type='N/A'/>";
        newItems += "    <item type=\"N/A\" />\n";
    }
    oldText += "<Item Type='a'/><Item Type='b'/></DssKey>";
    EXPECT_EQ(Translated(oldText), NewKeys(newItems + NewKey("a", "-1")));
}

TEST(DssKeyV4XToV50, AListWithoutKeysBecomesAnEmptyRoot)
{
    for (const char* text : {"<DssKey/>", "<DssKey></DssKey>", "<DssKey><item Type='x'/>text</DssKey>",
                             "<Head/><DssKey/><DssKey><Item Type='x'/></DssKey>"})
        EXPECT_EQ(Translated(text), "<dsskey />\n") << text;
}

TEST(DssKeyV4XToV50, OtherElementsAndLaterDataAreIgnored)
{
    EXPECT_EQ(
        Translated(
            "<DssKey><Page><Item Type='deeper'/></Page><Item Type='a'><Extra Line='1'/><ItemData Line='2'/>"
            "<ItemData Line='3'/></Item><Key Type='b'/><Item Type='c'><x><ItemData Line='5'/></x></Item></DssKey>"),
        NewKeys(NewKey("a", "2") + NewKey("c", "-1")));
}

TEST(DssKeyV4XToV50, TextsAreCarriedOverAsTheyStand)
{
    EXPECT_EQ(Translated("<?xml version='1.0' encoding='UTF-8'?><DssKey><Item Type='A&amp;B'><ItemData Line='1' "
                         "Value=' sip:a@example.net;x=&quot;1&quot; ' Label='&lt;T\xC3\xBCr&gt; %s' "
                         "Extension=\"it's\"/></Item></DssKey>"),
              "<dsskey>\n"
              "    <item type=\"A&amp;B\">\n"
              "        <itemdata line=\"1\" value=' sip:a@example.net;x=&quot;1&quot; ' label=\"&lt;T\xC3\xBCr&gt; %s\""
              " extension=\"it&apos;s\" />\n"
              "    </item>\n"
              "</dsskey>\n");
}

TEST(DssKeyV4XToV50, ASecondRunWritesTheSameOverWhateverIsThere)
{
    Keys keys;
    WriteBytes(keys.oldPath, "<DssKey><Item Type='Speed Dial'/></DssKey>");
    WriteBytes(keys.newPath,
               "<dsskey>edited by hand, and so long that what replaces it is shorter than it is, which matters "
               "if the rest of the old bytes stayed behind the new ones</dsskey>\n");
    for (int run = 0; run < 2; ++run) {
        EXPECT_EQ(keys.Translate(), 1);
        EXPECT_EQ(ReadBytes(keys.newPath), NewKeys(NewKey("SpeedDial", "-1")));
    }
}

TEST(DssKeyV4XToV50, ANullPathIsAFailureWithoutAWord)
{
    const Keys keys;
    WriteBytes(keys.oldPath, "<DssKey/>");
    testing::internal::CaptureStderr();
    EXPECT_EQ(DSSKeyV4XToV50(nullptr, keys.newPath.c_str()), 0);
    EXPECT_EQ(DSSKeyV4XToV50(keys.oldPath.c_str(), nullptr), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), kEnter + kLeave + kEnter + kLeave);
    EXPECT_EQ(keys.FileCount(), 1u);
}

TEST(DssKeyV4XToV50, MissingKeysAreTracedWithoutAPath)
{
    Keys keys;
    WriteBytes(keys.newPath, "before");
    EXPECT_EQ(keys.Translate(), 0);
    EXPECT_EQ(keys.reports, kEnter + "etlTrace 2: DSSKey file not exist !\n" + kLeave);
    EXPECT_EQ(ReadBytes(keys.newPath), "before");
    EXPECT_EQ(keys.FileCount(), 1u);
}

TEST(DssKeyV4XToV50, KeysThatDoNotLoadAreTracedAndTheNewFileStays)
{
    for (const char* text : {"", "\n", "<DssKey>", "<DssKey><Item></DssKey>", "no XML"}) {
        Keys keys;
        WriteBytes(keys.oldPath, text);
        EXPECT_EQ(keys.Translate(), 0) << text;
        EXPECT_EQ(keys.reports, kEnter + "etlTrace 2: Can't load the dsskey file [" + keys.oldPath + "]!\n" + kLeave)
            << text;
        EXPECT_EQ(keys.FileCount(), 1u) << text;

        WriteBytes(keys.newPath, "before");
        EXPECT_EQ(keys.Translate(), 0) << text;
        EXPECT_EQ(ReadBytes(keys.newPath), "before") << text;
        EXPECT_EQ(ReadBytes(keys.oldPath), text);
    }
}

TEST(DssKeyV4XToV50, AnotherRootIsAFailureWithoutAWord)
{
    for (const char* text : {"<dsskey><Item Type='a'/></dsskey>", "<Other><DssKey/></Other>"}) {
        Keys keys;
        WriteBytes(keys.oldPath, text);
        WriteBytes(keys.newPath, "before");
        EXPECT_EQ(keys.Translate(), 0) << text;
        EXPECT_EQ(keys.reports, kEnter + kLeave) << text;
        EXPECT_EQ(ReadBytes(keys.newPath), "before") << text;
    }
}

TEST(DssKeyV4XToV50, AFailedSaveIsAFailureWithoutAWord)
{
    Keys keys;
    WriteBytes(keys.oldPath, "<DssKey/>");
    for (const std::string& path : {keys.folder.Path("missing/memkey.xml"), keys.folder.Path()}) {
        EXPECT_EQ(keys.Translate(path), 0) << path;
        EXPECT_EQ(keys.reports, kEnter + kLeave) << path;
    }
    EXPECT_EQ(keys.FileCount(), 1u);
}

TEST(DssKeyV4XToV50GetData, TheListIsEmptiedOnceTheFileIsFound)
{
    struct Row {
        const char* text;          // of the old file; null for none
        int result;                // of the reader
        std::size_t expectedCount; // of keys, one of which was already in the list
    };
    const Row rows[] = {
        {nullptr, 0, 1},
        {"<DssKey", 0, 0},
        {"<Other/>", 0, 0},
        {"<DssKey/>", 1, 0},
        {"<DssKey><Item/><Item/></DssKey>", 1, 2},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text == nullptr ? "no file" : row.text);
        const Keys files;
        if (row.text != nullptr)
            WriteBytes(files.oldPath, row.text);
        std::list<DSSKeyRecord> keys(1);
        testing::internal::CaptureStderr();
        EXPECT_EQ(GetV4XDSSKeyData(files.oldPath.c_str(), keys), row.result);
        (void)testing::internal::GetCapturedStderr();
        EXPECT_EQ(keys.size(), row.expectedCount);
    }
}

TEST(DssKeyV4XToV50GetData, ANullPathLeavesTheListAlone)
{
    std::list<DSSKeyRecord> keys(1);
    testing::internal::CaptureStderr();
    EXPECT_EQ(GetV4XDSSKeyData(nullptr, keys), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(keys.size(), 1u);
}

TEST(DssKeyV4XToV50GetData, EveryKeyIsReadAndTypesAreNotYetRespelled)
{
    const Keys files;
    std::string text = "<DssKey>";
    for (int number = 0; number < 20; ++number)
        text += "<Item Type='Speed Dial'><ItemData Line='3' Value='v' Label='l' Extension='e'/></Item>";
    WriteBytes(files.oldPath, text + "<Item Type='N/A'><ItemData Line='3' Value='v'/></Item></DssKey>");
    std::list<DSSKeyRecord> keys;
    ASSERT_EQ(GetV4XDSSKeyData(files.oldPath.c_str(), keys), 1);
    ASSERT_EQ(keys.size(), 21u);
    EXPECT_EQ(keys.front().type, "Speed Dial");
    EXPECT_EQ(keys.front().value, "v");
    EXPECT_EQ(keys.front().line, 3);
    EXPECT_EQ(keys.front().label, "l");
    EXPECT_EQ(keys.front().extension, "e");
    EXPECT_EQ(keys.back().type, "N/A");
    EXPECT_EQ(keys.back().value, "");
    EXPECT_EQ(keys.back().line, -1);
}

TEST(DssKeyV4XToV50SetData, TheResultIsThatOfTheSave)
{
    const Keys files;
    const std::list<DSSKeyRecord> keys = {{"BLF List", "v", -5, "l", "e"}};
    EXPECT_EQ(SetV50DSSKeyData(nullptr, keys), 0);
    EXPECT_EQ(SetV50DSSKeyData(files.folder.Path("missing/new.xml").c_str(), keys), 0);
    EXPECT_EQ(SetV50DSSKeyData(files.newPath.c_str(), keys), 1);
    EXPECT_EQ(ReadBytes(files.newPath),
              NewKeys("    <item type=\"BLFList\">\n"
                      "        <itemdata line=\"-5\" value=\"v\" label=\"l\" extension=\"e\" />\n"
                      "    </item>\n"));
}
