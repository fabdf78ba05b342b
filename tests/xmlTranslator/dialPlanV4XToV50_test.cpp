// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "dialPlanV4XToV50.h"

#include <filesystem>
#include <gtest/gtest.h>

#include "phoneImage.h"
#include "translation.h"

namespace
{

const std::string kEnter = "chTraceStack: enter DialPlanV4XToV50\n";
const std::string kLeave = "chTraceStack: leave DialPlanV4XToV50\n";

/// The names differ only in letter case, as on the device.
struct Plans : Translation {
    Plans() : Translation(&DialPlanV4XToV50, "dialplan.xml", "DialPlan.xml") {}
};

/// The new plan for an old plan with this content.
std::string Translated(const std::string& oldText)
{
    return Plans().Translated(oldText, kEnter + kLeave);
}

} // namespace

TEST(DialPlanV4XToV50, RulesMoveInOrderUnderTheirNewNames)
{
    EXPECT_EQ(Translated("<DialRule>\n"
                         "  <Data Prefix=\"0\" Replace=\"0041\" Account=\"1,3\" />\n"
                         "  <Data Account=\"\" Replace=\"b\" Prefix=\"a\"></Data>\n"
                         "  <Data Prefix=\"0\" Replace=\"0041\" Account=\"1,3\" />\n"
                         "</DialRule>\n"),
              "<dialRule>\n"
              "    <data rule=\"0\" replace=\"0041\" lines=\"1,3\" />\n"
              "    <data rule=\"a\" replace=\"b\" lines=\"\" />\n"
              "    <data rule=\"0\" replace=\"0041\" lines=\"1,3\" />\n"
              "</dialRule>\n");
}

TEST(DialPlanV4XToV50, APlanWithoutRulesBecomesAnEmptyRoot)
{
    for (const char* text :
         {"<DialRule/>", "<DialRule></DialRule>", "<DialRule><!-- none --><data Prefix='1'/></DialRule>",
          "<Other/><DialRule/><DialRule><Data Prefix='1'/></DialRule>"})
        EXPECT_EQ(Translated(text), "<dialRule />\n") << text;
}

TEST(DialPlanV4XToV50, AZeroCharacterEndsAText)
{
    EXPECT_EQ(Translated("<DialRule><Data Prefix='1&#0;2' Replace='&#0;3' Account='4&#x0;'/>"
                         "<Data Prefix='&#00;' Replace='5&#x000;6&#0;7'/></DialRule>"),
              "<dialRule>\n"
              "    <data rule=\"1\" replace=\"\" lines=\"4\" />\n"
              "    <data rule=\"\" replace=\"5\" lines=\"\" />\n"
              "</dialRule>\n");
}

TEST(DialPlanV4XToV50, AMissingAttributeIsWrittenEmpty)
{
    EXPECT_EQ(Translated("<DialRule><Data Prefix='1' Replace='2'/><Data/></DialRule>"),
              "<dialRule>\n"
              "    <data rule=\"1\" replace=\"2\" lines=\"\" />\n"
              "    <data rule=\"\" replace=\"\" lines=\"\" />\n"
              "</dialRule>\n");
}

TEST(DialPlanV4XToV50, NamesAreMatchedToTheLetter)
{
    EXPECT_EQ(Translated("<DialRule><Data prefix='1' REPLACE='2' account='3'/></DialRule>"),
              "<dialRule>\n    <data rule=\"\" replace=\"\" lines=\"\" />\n</dialRule>\n");
}

TEST(DialPlanV4XToV50, OtherElementsAreSkippedAndDisturbNoOrder)
{
    EXPECT_EQ(Translated("<!-- old --><Head/><DialRule>text<Rule Prefix='x'/><Data Prefix='1'/><data Prefix='y'/>"
                         "<Group><Data Prefix='z'/></Group><Data Prefix='2'><Data Prefix='w'/></Data></DialRule>"),
              "<dialRule>\n"
              "    <data rule=\"1\" replace=\"\" lines=\"\" />\n"
              "    <data rule=\"2\" replace=\"\" lines=\"\" />\n"
              "</dialRule>\n");
}

TEST(DialPlanV4XToV50, TextsAreCarriedOverAsTheyStand)
{
    EXPECT_EQ(Translated("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<DialRule>\r\n"
                         "<Data Prefix=' [0-9]. ' Replace='&lt;&amp;&gt;' Account='0, 1 ,-1,99999999999'/>\r\n"
                         "<Data Prefix='&quot;' Replace=\"'\" Account='Z\xC3\xBCrich %s %n'/>\r\n</DialRule>\r\n"),
              "<dialRule>\n"
              "    <data rule=\" [0-9]. \" replace=\"&lt;&amp;&gt;\" lines=\"0, 1 ,-1,99999999999\" />\n"
              "    <data rule='&quot;' replace=\"&apos;\" lines=\"Z\xC3\xBCrich %s %n\" />\n"
              "</dialRule>\n");
}

TEST(DialPlanV4XToV50, AThousandRulesAreKept)
{
    std::string oldText = "<DialRule>";
    std::string newText = "<dialRule>\n";
    for (int number = 0; number < 1000; ++number) {
        oldText += "<Data Prefix='" + std::to_string(number) + "'/>";
        newText += "    <data rule=\"" + std::to_string(number) + "\" replace=\"\" lines=\"\" />\n";
    }
    EXPECT_EQ(Translated(oldText + "</DialRule>"), newText + "</dialRule>\n");
}

TEST(DialPlanV4XToV50, ASecondRunWritesTheSameOverWhateverIsThere)
{
    Plans plans;
    const std::string newText = "<dialRule>\n    <data rule=\"1\" replace=\"2\" lines=\"3\" />\n</dialRule>\n";
    WriteBytes(plans.oldPath, "<DialRule><Data Prefix='1' Replace='2' Account='3'/></DialRule>");
    WriteBytes(plans.newPath, "<dialRule>edited by hand, and much longer than what will replace it</dialRule>\n");
    for (int run = 0; run < 2; ++run) {
        EXPECT_EQ(plans.Translate(), 1);
        EXPECT_EQ(ReadBytes(plans.newPath), newText);
    }
}

TEST(DialPlanV4XToV50, ANullPathIsAFailureWithoutAWord)
{
    Plans plans;
    WriteBytes(plans.oldPath, "<DialRule/>");
    testing::internal::CaptureStderr();
    EXPECT_EQ(DialPlanV4XToV50(nullptr, plans.newPath.c_str()), 0);
    EXPECT_EQ(DialPlanV4XToV50(plans.oldPath.c_str(), nullptr), 0);
    EXPECT_EQ(DialPlanV4XToV50(nullptr, nullptr), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), kEnter + kLeave + kEnter + kLeave + kEnter + kLeave);
    EXPECT_EQ(plans.FileCount(), 1u);
}

TEST(DialPlanV4XToV50, AMissingPlanIsTracedAndTheNewFileStays)
{
    Plans plans;
    WriteBytes(plans.newPath, "before");
    EXPECT_EQ(plans.Translate(), 0);
    EXPECT_EQ(plans.reports, kEnter + "etlTrace 2: The file [" + plans.oldPath + "] is not found !!\n" + kLeave);
    EXPECT_EQ(ReadBytes(plans.newPath), "before");
    EXPECT_EQ(plans.FileCount(), 1u);
}

TEST(DialPlanV4XToV50, APlanThatDoesNotLoadIsTracedAndTheNewFileStays)
{
    for (const char* text : {"", " \n", "<DialRule>", "<DialRule><Data Prefix='1'></DialRule>", "no XML"}) {
        Plans plans;
        WriteBytes(plans.oldPath, text);
        WriteBytes(plans.newPath, "before");
        EXPECT_EQ(plans.Translate(), 0) << text;
        EXPECT_EQ(plans.reports, kEnter + "etlTrace 2: The file [" + plans.oldPath + "] can't be loaded !\n" + kLeave)
            << text;
        EXPECT_EQ(ReadBytes(plans.newPath), "before") << text;
        EXPECT_EQ(ReadBytes(plans.oldPath), text);
    }
}

TEST(DialPlanV4XToV50, APercentSignInThePathIsTracedAsItStands)
{
    Plans plans;
    plans.oldPath = plans.folder.Path("%s%n%5d.xml");
    EXPECT_EQ(plans.Translate(), 0);
    EXPECT_EQ(plans.reports, kEnter + "etlTrace 2: The file [" + plans.oldPath + "] is not found !!\n" + kLeave);
}

TEST(DialPlanV4XToV50, AnotherRootIsAFailureWithoutAWord)
{
    for (const char* text :
         {"<dialRule><Data Prefix='1'/></dialRule>", "<Other><DialRule/></Other>", "<!-- <DialRule/> -->"}) {
        Plans plans;
        WriteBytes(plans.oldPath, text);
        WriteBytes(plans.newPath, "before");
        EXPECT_EQ(plans.Translate(), 0) << text;
        EXPECT_EQ(plans.reports, kEnter + kLeave) << text;
        EXPECT_EQ(ReadBytes(plans.newPath), "before") << text;
    }
}

TEST(DialPlanV4XToV50, AFailedSaveIsAFailureWithoutAWord)
{
    Plans plans;
    WriteBytes(plans.oldPath, "<DialRule/>");
    for (const std::string& path : {plans.folder.Path("missing/DialPlan.xml"), plans.folder.Path()}) {
        EXPECT_EQ(plans.Translate(path), 0) << path;
        EXPECT_EQ(plans.reports, kEnter + kLeave) << path;
    }
    EXPECT_EQ(plans.FileCount(), 1u);
}

TEST(DialPlanV4XToV50, ANewPlanThatIsALinkToTheOldOneReplacesIt)
{
    Plans plans;
    WriteBytes(plans.oldPath, "<DialRule><Data Prefix='1' Replace='2' Account='3'/></DialRule>");
    std::filesystem::create_symlink("dialplan.xml", plans.newPath);
    const std::string newPlan = "<dialRule>\n    <data rule=\"1\" replace=\"2\" lines=\"3\" />\n</dialRule>\n";
    EXPECT_EQ(plans.Translate(), 1);
    EXPECT_EQ(ReadBytes(plans.oldPath), newPlan);

    EXPECT_EQ(plans.Translate(), 0); // the old plan is gone, and the new one stays
    EXPECT_EQ(plans.reports, kEnter + kLeave);
    EXPECT_EQ(ReadBytes(plans.oldPath), newPlan);
    EXPECT_EQ(std::filesystem::read_symlink(plans.newPath), "dialplan.xml");
    EXPECT_FALSE(std::filesystem::is_symlink(plans.oldPath));
    EXPECT_EQ(plans.FileCount(), 2u);
}

TEST(DialPlanV4XToV50, AnOldPlanThatIsALinkToTheNewOneIsReplacedAsWell)
{
    Plans plans;
    WriteBytes(plans.newPath, "<DialRule><Data Prefix='1'/></DialRule>");
    std::filesystem::create_symlink("DialPlan.xml", plans.oldPath);
    EXPECT_EQ(plans.Translate(), 1);
    EXPECT_EQ(ReadBytes(plans.newPath), "<dialRule>\n    <data rule=\"1\" replace=\"\" lines=\"\" />\n</dialRule>\n");
    EXPECT_EQ(std::filesystem::read_symlink(plans.oldPath), "DialPlan.xml");
    EXPECT_EQ(plans.FileCount(), 2u);
}

TEST(DialPlanV4XToV50OfARun, ANewPlanThatIsALinkToTheOldOneStaysALink)
{
    PhoneImage phone;
    phone.Put("/config/user/user.ini", "[Feature]\nRingbackTimeout=90\n");
    for (const char* target : {"dialplan.xml", "/config/data/dialplan.xml"}) {
        phone.Put("/config/data/dialplan.xml", "<DialRule><Data Prefix='1'/></DialRule>");
        phone.Remove("/config/data/DialPlan.xml");
        std::filesystem::create_symlink(target, phone.HostPath("/config/data/DialPlan.xml"));
        phone.Run("dev");
        phone.Expect("/config/data/dialplan.xml",
                     "<dialRule>\n    <data rule=\"1\" replace=\"\" lines=\"\" />\n</dialRule>\n");
        phone.ExpectNothingElseChanged();
        phone.Run("dev");
        phone.ExpectNothingElseChanged();
    }
}

TEST(DialPlanV4XToV50GetData, TheListIsEmptiedOnceTheFileIsFound)
{
    struct Row {
        const char* text;          // of the old file; null for none
        int result;                // of the reader
        std::size_t expectedCount; // of rules, one of which was already in the list
    };
    const Row rows[] = {
        {nullptr, 0, 1},
        {"<DialRule", 0, 0},
        {"<Other/>", 0, 0},
        {"<DialRule/>", 1, 0},
        {"<DialRule><Data/><Data/></DialRule>", 1, 2},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text == nullptr ? "no file" : row.text);
        const Plans plans;
        if (row.text != nullptr)
            WriteBytes(plans.oldPath, row.text);
        std::list<DialRuleRecord> rules = {{"stale", "stale", "stale"}};
        testing::internal::CaptureStderr();
        EXPECT_EQ(GetV4XDialPlanData(plans.oldPath.c_str(), rules), row.result);
        EXPECT_EQ(testing::internal::GetCapturedStderr().find("chTraceStack"), std::string::npos);
        EXPECT_EQ(rules.size(), row.expectedCount);
    }
}

TEST(DialPlanV4XToV50GetData, ARuleIsReadWhole)
{
    const Plans plans;
    WriteBytes(plans.oldPath, "<DialRule><Data Prefix='p' Replace='r' Account='a'/></DialRule>");
    std::list<DialRuleRecord> rules;
    ASSERT_EQ(GetV4XDialPlanData(plans.oldPath.c_str(), rules), 1);
    ASSERT_EQ(rules.size(), 1u);
    EXPECT_EQ(rules.front().prefix, "p");
    EXPECT_EQ(rules.front().replacement, "r");
    EXPECT_EQ(rules.front().account, "a");
}

TEST(DialPlanV4XToV50GetData, ANullPathLeavesTheListAlone)
{
    std::list<DialRuleRecord> rules = {{"kept", "", ""}};
    testing::internal::CaptureStderr();
    EXPECT_EQ(GetV4XDialPlanData(nullptr, rules), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(rules.size(), 1u);
}

TEST(DialPlanV4XToV50SetData, TheResultIsThatOfTheSave)
{
    const Plans plans;
    const std::list<DialRuleRecord> rules = {{"p", "r", "a"}};
    EXPECT_EQ(SetV50DialPlanData(nullptr, rules), 0);
    EXPECT_EQ(SetV50DialPlanData(plans.folder.Path("missing/new.xml").c_str(), rules), 0);
    EXPECT_EQ(SetV50DialPlanData(plans.newPath.c_str(), rules), 1);
    EXPECT_EQ(ReadBytes(plans.newPath), "<dialRule>\n    <data rule=\"p\" replace=\"r\" lines=\"a\" />\n</dialRule>\n");
}
