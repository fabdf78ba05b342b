// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "dialNowV4XToV50.h"

#include <gtest/gtest.h>

#include "translation.h"

namespace
{

const std::string kEnter = "chTraceStack: enter DialNowV4XToV50\n";
const std::string kLeave = "chTraceStack: leave DialNowV4XToV50\n";

/// The names differ only in letter case, as on the device.
struct Rules : Translation {
    Rules() : Translation(&DialNowV4XToV50, "dialnow.xml", "DialNow.xml") {}
};

/// The new file for an old one with this content.
std::string Translated(const std::string& oldText)
{
    return Rules().Translated(oldText, kEnter + kLeave);
}

} // namespace

TEST(DialNowV4XToV50, RulesMoveInOrderAndNeverHaveAReplacement)
{
    EXPECT_EQ(Translated("<DialNow>\n"
                         "  <Data DialNowRule=\"xxx\" Account=\"1\" />\n"
                         "  <Data Account=\"2,3\" Replace=\"9\" DialNowRule=\"0x.\" />\n"
                         "  <Data DialNowRule=\"abc\" Account=\"\" />\n"
                         "</DialNow>\n"),
              "<dialNow>\n"
              "    <data rule=\"xxx\" lines=\"1\" />\n"
              "    <data rule=\"0x.\" lines=\"2,3\" />\n"
              "    <data rule=\"abc\" lines=\"\" />\n"
              "</dialNow>\n");
}

TEST(DialNowV4XToV50, AZeroCharacterEndsAText)
{
    EXPECT_EQ(Translated("<DialNow><Data DialNowRule='1&#0;2' Account='&#x0;3'/><Data DialNowRule='&#00;'/></DialNow>"),
              "<dialNow>\n"
              "    <data rule=\"1\" lines=\"\" />\n"
              "    <data rule=\"\" lines=\"\" />\n"
              "</dialNow>\n");
}

TEST(DialNowV4XToV50, AListWithoutRulesBecomesAnEmptyRoot)
{
    for (const char* text :
         {"<DialNow/>", "<DialNow></DialNow>", "<Head/><DialNow/><DialNow><Data DialNowRule='1'/></DialNow>"})
        EXPECT_EQ(Translated(text), "<dialNow />\n") << text;
}

TEST(DialNowV4XToV50, AMissingAttributeIsWrittenEmpty)
{
    EXPECT_EQ(Translated("<DialNow><Data/><Data dialnowrule='1' account='2'/></DialNow>"),
              "<dialNow>\n"
              "    <data rule=\"\" lines=\"\" />\n"
              "    <data rule=\"\" lines=\"\" />\n"
              "</dialNow>\n");
}

TEST(DialNowV4XToV50, OnlyDirectChildrenOfTheExactNameCount)
{
    EXPECT_EQ(Translated("<DialNow><data DialNowRule='x'/><Data DialNowRule='1'/><Set><Data DialNowRule='y'/></Set>"
                         "<DATA DialNowRule='z'/><Data DialNowRule='2'><Data DialNowRule='w'/></Data></DialNow>"),
              "<dialNow>\n"
              "    <data rule=\"1\" lines=\"\" />\n"
              "    <data rule=\"2\" lines=\"\" />\n"
              "</dialNow>\n");
}

TEST(DialNowV4XToV50, TextsAreCarriedOverAsTheyStand)
{
    EXPECT_EQ(Translated("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<DialNow>"
                         "<Data DialNowRule=' 0 , 1 ' Account='&lt;&amp;&gt;'/>"
                         "<Data DialNowRule='a&quot;b' Account=\"it's \xE2\x98\x8E %n\"/></DialNow>"),
              "<dialNow>\n"
              "    <data rule=\" 0 , 1 \" lines=\"&lt;&amp;&gt;\" />\n"
              "    <data rule='a&quot;b' lines=\"it&apos;s \xE2\x98\x8E %n\" />\n"
              "</dialNow>\n");
}

TEST(DialNowV4XToV50, AThousandRulesAreKept)
{
    std::string oldText = "<DialNow>";
    std::string newText = "<dialNow>\n";
    for (int number = 0; number < 1000; ++number) {
        oldText += "<Data DialNowRule='" + std::to_string(number) + "'/>";
        newText += "    <data rule=\"" + std::to_string(number) + "\" lines=\"\" />\n";
    }
    EXPECT_EQ(Translated(oldText + "</DialNow>"), newText + "</dialNow>\n");
}

TEST(DialNowV4XToV50, ASecondRunWritesTheSameOverWhateverIsThere)
{
    Rules rules;
    WriteBytes(rules.oldPath, "<DialNow><Data DialNowRule='1' Account='2'/></DialNow>");
    WriteBytes(rules.newPath, "<dialNow>edited by hand, and much longer than what will replace it</dialNow>\n");
    for (int run = 0; run < 2; ++run) {
        EXPECT_EQ(rules.Translate(), 1);
        EXPECT_EQ(ReadBytes(rules.newPath), "<dialNow>\n    <data rule=\"1\" lines=\"2\" />\n</dialNow>\n");
    }
}

TEST(DialNowV4XToV50, ANullPathIsAFailureWithoutAWord)
{
    const Rules rules;
    WriteBytes(rules.oldPath, "<DialNow/>");
    testing::internal::CaptureStderr();
    EXPECT_EQ(DialNowV4XToV50(nullptr, rules.newPath.c_str()), 0);
    EXPECT_EQ(DialNowV4XToV50(rules.oldPath.c_str(), nullptr), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), kEnter + kLeave + kEnter + kLeave);
    EXPECT_EQ(rules.FileCount(), 1u);
}

TEST(DialNowV4XToV50, MissingRulesAreTracedAndTheNewFileStays)
{
    Rules rules;
    WriteBytes(rules.newPath, "before");
    EXPECT_EQ(rules.Translate(), 0);
    EXPECT_EQ(rules.reports, kEnter + "etlTrace 2: The file [" + rules.oldPath + "] is not found !!\n" + kLeave);
    EXPECT_EQ(ReadBytes(rules.newPath), "before");
    EXPECT_EQ(rules.FileCount(), 1u);
}

TEST(DialNowV4XToV50, RulesThatDoNotLoadAreTracedAndTheNewFileStays)
{
    for (const char* text : {"", "\n", "<DialNow>", "<DialNow><Data DialNowRule='1</DialNow>", "no XML"}) {
        Rules rules;
        WriteBytes(rules.oldPath, text);
        EXPECT_EQ(rules.Translate(), 0) << text;
        EXPECT_EQ(rules.reports, kEnter + "etlTrace 2: The file [" + rules.oldPath + "] can't be loaded !\n" + kLeave)
            << text;
        EXPECT_EQ(rules.FileCount(), 1u) << text;

        WriteBytes(rules.newPath, "before");
        EXPECT_EQ(rules.Translate(), 0) << text;
        EXPECT_EQ(ReadBytes(rules.newPath), "before") << text;
        EXPECT_EQ(ReadBytes(rules.oldPath), text);
    }
}

TEST(DialNowV4XToV50, AnotherRootIsAFailureWithoutAWord)
{
    for (const char* text : {"<dialNow><Data DialNowRule='1'/></dialNow>", "<Other><DialNow/></Other>"}) {
        Rules rules;
        WriteBytes(rules.oldPath, text);
        WriteBytes(rules.newPath, "before");
        EXPECT_EQ(rules.Translate(), 0) << text;
        EXPECT_EQ(rules.reports, kEnter + kLeave) << text;
        EXPECT_EQ(ReadBytes(rules.newPath), "before") << text;
    }
}

TEST(DialNowV4XToV50, AFailedSaveIsAFailureWithoutAWord)
{
    Rules rules;
    WriteBytes(rules.oldPath, "<DialNow/>");
    for (const std::string& path : {rules.folder.Path("missing/DialNow.xml"), rules.folder.Path()}) {
        EXPECT_EQ(rules.Translate(path), 0) << path;
        EXPECT_EQ(rules.reports, kEnter + kLeave) << path;
    }
    EXPECT_EQ(rules.FileCount(), 1u);
}

TEST(DialNowV4XToV50GetData, RulesAreAppendedAndTheListIsNeverEmptied)
{
    struct Row {
        const char* text;          // of the old file; null for none
        int result;                // of the reader
        std::size_t expectedCount; // of rules, one of which was already in the list
    };
    const Row rows[] = {
        {nullptr, 0, 1},
        {"<DialNow", 0, 1},
        {"<Other/>", 0, 1},
        {"<DialNow/>", 1, 1},
        {"<DialNow><Data DialNowRule='a'/><Data DialNowRule='b'/></DialNow>", 1, 3},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text == nullptr ? "no file" : row.text);
        const Rules files;
        if (row.text != nullptr)
            WriteBytes(files.oldPath, row.text);
        std::list<DialRuleRecord> rules = {{"first", "replacement", "account"}};
        testing::internal::CaptureStderr();
        EXPECT_EQ(GetV4XDialNowData(files.oldPath.c_str(), rules), row.result);
        (void)testing::internal::GetCapturedStderr();
        ASSERT_EQ(rules.size(), row.expectedCount);
        EXPECT_EQ(rules.front().prefix, "first");
        EXPECT_EQ(rules.front().replacement, "replacement");
    }
}

TEST(DialNowV4XToV50GetData, ARuleHasNoReplacement)
{
    const Rules files;
    WriteBytes(files.oldPath, "<DialNow><Data DialNowRule='p' Replace='r' Account='a'/></DialNow>");
    std::list<DialRuleRecord> rules;
    ASSERT_EQ(GetV4XDialNowData(files.oldPath.c_str(), rules), 1);
    ASSERT_EQ(rules.size(), 1u);
    EXPECT_EQ(rules.front().prefix, "p");
    EXPECT_EQ(rules.front().replacement, "");
    EXPECT_EQ(rules.front().account, "a");
}

TEST(DialNowV4XToV50GetData, ANullPathIsAFailureWithoutAWord)
{
    std::list<DialRuleRecord> rules = {{"kept", "", ""}};
    testing::internal::CaptureStderr();
    EXPECT_EQ(GetV4XDialNowData(nullptr, rules), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(rules.size(), 1u);
}

TEST(DialNowV4XToV50SetData, TheResultIsThatOfTheSaveAndAReplacementIsNotWritten)
{
    const Rules files;
    const std::list<DialRuleRecord> rules = {{"p", "r", "a"}};
    EXPECT_EQ(SetV50DialNowData(nullptr, rules), 0);
    EXPECT_EQ(SetV50DialNowData(files.folder.Path("missing/new.xml").c_str(), rules), 0);
    EXPECT_EQ(SetV50DialNowData(files.newPath.c_str(), rules), 1);
    EXPECT_EQ(ReadBytes(files.newPath), "<dialNow>\n    <data rule=\"p\" lines=\"a\" />\n</dialNow>\n");
}
