// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Every rule has a table that fires it and one that does not, rules/KT000.fires.xml and rules/KT000.silent.xml. Each is
// checked against the phone in phone/, whose lock is on, and says in its first line what is found in it.

#include "rules.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <regex>

#include "report.h"
#include "scratchFolder.h"
#include "tableCheckRun.h"

namespace
{

std::string Announced(const std::string& table)
{
    std::smatch match;
    const std::string text = ReadBytes(table);
    return std::regex_search(text, match, std::regex("^<!-- finds: (.*) -->\n")) ? match[1].str() : "no first line";
}

} // namespace

TEST(TableRules, EachHasATableThatFiresItAndOneThatDoesNot)
{
    const ScratchFolder keyless;
    PutKeylessPhone(keyless.Path());
    for (const Rule& rule : Rules()) {
        for (const char* kind : {"fires", "silent"}) {
            const std::string table = TablePath(rule, kind);
            SCOPED_TRACE(table);
            ASSERT_TRUE(std::filesystem::exists(table));
            const bool needsNoKey = rule.number == "KT039" && std::string(kind) == "fires";
            const std::string found = Summary(Check(table, needsNoKey ? keyless.Path() : TestPhone()));
            EXPECT_EQ(found, Announced(table));
            EXPECT_EQ(found.find(rule.number) != std::string::npos, std::string(kind) == "fires");
        }
    }
}

TEST(TableRules, NoTableIsLeftOfARuleThatIsNone)
{
    for (const auto& entry : std::filesystem::directory_iterator(SourcePath("tests/tools/tableCheck/rules")))
        EXPECT_NE(FindRule(entry.path().filename().string().substr(0, 5)), nullptr) << entry.path();
}

TEST(TableRules, NumbersFollowEachOther)
{
    int number = 0;
    for (const Rule& rule : Rules()) {
        const std::string digits = std::to_string(++number);
        EXPECT_EQ(rule.number, "KT" + std::string(3 - digits.size(), '0') + digits);
    }
}

TEST(TableRules, OnlyRulesAboutImagesNeedOne)
{
    for (const Rule& rule : Rules()) {
        const bool needsImage = (rule.number >= "KT022" && rule.number <= "KT029") || rule.number == "KT013" ||
                                rule.number == "KT014" || rule.number == "KT039" || rule.number == "KT040";
        const std::string found = Summary(Check(TablePath(rule, "fires"), /*image=*/""));
        EXPECT_EQ(found.find(rule.number) == std::string::npos, needsImage) << rule.number << ": " << found;
    }
}

TEST(TableRules, TheExamplePhoneHasNeitherErrorsNorWarnings)
{
    const std::string table = SourcePath("examples/phone/phone/resource/kestrune.xml");
    for (const std::string& image : {std::string(), SourcePath("examples/phone")}) {
        const Tally tally = Count(Check(table, image));
        EXPECT_EQ(tally.errors, 0);
        EXPECT_EQ(tally.warnings, 0);
    }
}

TEST(TableRules, BooleansAreReadAsTheProgramReadsThem)
{
    struct Row {
        const char* text;
        const char* found;
    };
    const Row rows[] = {
        {"true", "nothing"},       {"TRUE", "nothing"},     {"1", "nothing"},        {"Yes", "nothing"},
        {"y", "KT007 at 2"},       {"", "KT007 at 2"},      {" true", "KT007 at 2"}, {"on", "KT007 at 2"},
        {"trueish", "KT008 at 2"}, {"true ", "KT008 at 2"}, {"1.0", "KT008 at 2"},   {"not", "KT008 at 2"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(SummaryOf(Record("srcSec='S' srcKey='K' dstKey='L' dstEncrypt='" + std::string(row.text) + "'")),
                  row.found)
            << row.text;
    }
}

TEST(TableRules, AMiswrittenNameIsRecognised)
{
    struct Row {
        const char* name;
        const char* ending;
    };
    const Row rows[] = {
        {"dstkey", "ignored; is dstKey meant?"},
        {"DSTKEY", "ignored; is dstKey meant?"},
        {"dstKye", "ignored; is dstKey meant?"},
        {"dstSect", "ignored; is dstSec meant?"},
        {"destFile", "ignored; is dstFile meant?"},
        {"srcEncrypted", "ignored; is srcEncrypt meant?"},
        {"dstSection", "ignored; is dstSec meant?"},
        {"sourceFile", "ignored; is srcFile meant?"},
        {"DestinationKey", "ignored; is dstKey meant?"},
        {"encrypt", "ignored; is srcEncrypt or dstEncrypt meant?"},
        {"file", "ignored; is srcFile or dstFile meant?"},
        {"section", "ignored; is srcSec or dstSec meant?"},
        {"Key", "ignored; is srcKey or dstKey meant?"},
        {"comment", "ignored"},
        {"dst", "ignored"},
        {"destination-file-of-the-record", "ignored"},
    };
    for (const Row& row : rows) {
        const ScratchFolder folder;
        WriteBytes(folder.Path("t"), Record("srcSec='S' srcKey='K' dstKey='L' " + std::string(row.name) + "='x'"));
        const Findings findings = Check(folder.Path("t"), /*image=*/"");
        ASSERT_EQ(Summary(findings), "KT004 at 2") << row.name;
        const std::string text = findings.front().text;
        EXPECT_EQ(text, "attribute \"" + std::string(row.name) + "\" is unknown and " + row.ending);
    }
}

TEST(TableRules, OfSeveralWritersTheLastIsNamed)
{
    const std::string record = "<record srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>\n";
    const ScratchFolder folder;
    WriteBytes(folder.Path("t"), "<t>\n" + record + record + record + "</t>");
    const Findings findings = Check(folder.Path("t"), /*image=*/"");
    ASSERT_EQ(Summary(findings), "KT010 at 3, KT010 at 4");
    EXPECT_NE(findings.back().text.find("line 3"), std::string::npos) << findings.back().text;
}

TEST(TableRules, ASuppressionTakesRulesAndThenAReason)
{
    const std::pair<const char*, const char*> rows[] = {
        {"ignore KT004", "KT020 at 3"},
        {"ignore KT004 KT020", "nothing"},
        {"ignore KT004, KT020", "nothing"},
        {"ignore kt004 Kt020: the reason", "nothing"},
        {"ignore KT004 KT020 (why)", "nothing"},
        {"ignore KT004 (why) KT020", "KT020 at 3"},
        {"ignore KT004 KT020 because KT999 is none", "nothing"},
        {"ignore KT004 KT020 KT4", "KT021 at 2"},
        {"ignore KT004 KT020 KT001", "KT038 at 2"}, // about the file
        {"ignore KT004 KT020 KT004", "KT038 at 2"},
        {"ignore KT004 KT020 KT024 KT013", "nothing"}, // on another phone they may find something
        {"ignore (why) KT004", "KT021 at 2, KT004 at 3, KT020 at 3"},
        {"ignore", "KT021 at 2, KT004 at 3, KT020 at 3"},
        {"", "KT021 at 2, KT004 at 3, KT020 at 3"},
        {"IGNORE KT004", "KT021 at 2, KT004 at 3, KT020 at 3"},
    };
    for (const auto& [words, found] : rows) {
        const std::string comment = "<!-- kestrune-table-check: " + std::string(words) + " -->\n";
        const std::string record = "<r srcFile='/config/a.ini' srcSec='S' srcKey='K' comment='x'/>\n";
        EXPECT_EQ(SummaryOf("<t>\n" + comment + record + "</t>"), found) << words;
    }
}

TEST(TableRules, ASuppressionWithinARecordSuppressesNothing)
{
    const std::string record = "<record srcFile='/config/a.ini' srcSec='S' srcKey='K'>\n"
                               "<!-- kestrune-table-check: ignore KT020 -->\n"
                               "</record>\n";
    EXPECT_EQ(SummaryOf("<t>\n" + record + "</t>"), "KT020 at 2, KT021 at 3");
}

TEST(TableRules, OneMistakeIsOneFinding)
{
    struct Row {
        const char* records;
        const char* found;
    };
    const Row rows[] = {
        {"<r><srcFile>/config/a.ini</srcFile>\n<srcSec>S</srcSec>\n<srcKey>K</srcKey></r>", "KT006 at 2"},
        {"<r/>\n<r/>", "KT006 at 2, KT006 at 3"},
        {"<r dstFile='' srcFile='/config/a.ini' srcSec='' srcKey='K'/>", "KT006 at 2"},
        {"<r dstFile='/config/user/user.ini' dstSec='Audio' dstKey='nOld'/>", "KT005 at 2"},
        {"<r dstFile='/config/user/user.ini' dstSec='Audio' dstKey='nOld'><srcKey>nNew</srcKey></r>", "KT005 at 2"},
        {"<r srcFile='/config/user/user.ini' srcSec='Audio' srcKey='nOld='  dstKey='nNew'/>", "KT017 at 2"},
        {"<r srcFile='/config/user/user.ini' srcSec='Audio' srcKey='nNone' dstKey='nNew'/>", "KT025 at 2"},
        {"<r srcFile='/config/none.ini' srcSec='Audio' srcKey='nOld' dstFile='/config/user/user.ini'/>", "KT025 at 2"},
        {"<r srcFile='/config/*.ini' srcSec='Audio' srcKey='nOld' dstFile='/config/user/user.ini'/>", "KT034 at 2"},
        {"<r srcFile='/config/user/user.ini' srcSec='Audio' srcKey='nNone' dstEncrypt='1'/>", "KT014 at 2, KT024 at 2"},
        {"<r srcFile='/config/none.ini' srcSec='Audio' srcKey='nOld'/>", "KT020 at 2, KT022 at 2"},
        {"<r srcFile='/config/user/user.ini' srcSec='Audio' srcKey='nOld' dstKey='nNew'>\n<a/><b/>\ntext</r>",
         "KT018 at 3"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(SummaryOf("<t>\n" + std::string(row.records) + "</t>", TestPhone()), row.found) << row.records;
}

TEST(TableRules, AnIntendedMistakeIsSuppressedWithItsConsequences)
{
    EXPECT_EQ(SummaryOf("<t><!-- kestrune-table-check: ignore KT005 -->"
                        "<r dstFile='/config/user/user.ini' dstSec='Audio' dstKey='nOld'/></t>",
                        TestPhone()),
              "nothing");
}

TEST(TableRules, LimitsOfTheLoaderAreThoseOfTheProgram)
{
    std::string records;
    for (int i = 0; i < 100000; ++i)
        records += "<r/>";
    EXPECT_EQ(SummaryOf("<t>\n" + records + "</t>"), "KT001 at 1"); // 100,001 elements with the root
    EXPECT_EQ(SummaryOf(""), "KT001 at 1");
    EXPECT_EQ(SummaryOf("no table"), "KT001 at 1");
    EXPECT_EQ(SummaryOf("<t>text</t>"), "KT002 at 1, KT018 at 1");
}

TEST(TableRules, ATableThatBreaksOffIsAnError)
{
    const std::string text = ReadBytes(SourcePath("tests/tools/tableCheck/rules/KT005.silent.xml"));
    const ScratchFolder folder;
    for (std::size_t size = 0; size < text.rfind('>'); ++size) {
        WriteBytes(folder.Path("t"), text.substr(0, size));
        EXPECT_EQ(Count(Check(folder.Path("t"), /*image=*/"")).errors, 1) << size;
    }
}

TEST(TableRules, ManyRecordsTakeNoLongTime)
{
    std::string records;
    for (int i = 0; i < 20000; ++i) {
        const std::string number = std::to_string(i);
        records += "<r srcFile='/config/a.ini' srcSec='S' srcKey='K" + number + "' dstKey='L" + number + "'/>\n";
    }
    EXPECT_EQ(SummaryOf("<t>\n" + records + "</t>"), "nothing");
}

TEST(TableRules, WhatStrictParsersRefuseIsFound)
{
    struct Row {
        std::string table;
        const char* found;
    };
    const std::string other = "<r srcFile='/config/a.ini' srcSec='S' srcKey='K&' dstKey='L'/>\n";
    const Row rows[] = {
        {Record("srcSec='S' srcKey='Hold&amp;Swap' dstKey='&lt;&gt;&quot;'"), "nothing"},
        {Record("srcSec='S' srcKey='Hold&Swap' dstKey='L'"), "KT036 at 2"},
        {Record("srcSec='S' srcKey='a & b & c' dstKey='x&y'"), "KT036 at 2"}, // one finding a line
        {Record("srcSec='S' srcKey='a<b' dstKey='L'"), "KT036 at 2"},
        {Record("srcSec='S' srcKey='\xff' dstKey='L'"), "KT036 at 2"},
        {Record("srcSec='S' srcKey=K dstKey='L'"), "KT036 at 2"},
        {Record("srcSec='S' srcKey='K' dstKey='L' x:note='1'"), "KT004 at 2"}, // well-formed, a namespace is missing
        {"<t>\n" + other + "\n" + other + "</t>", "KT036 at 2, KT010 at 4, KT036 at 4"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(SummaryOf(row.table), row.found) << row.table;
}
