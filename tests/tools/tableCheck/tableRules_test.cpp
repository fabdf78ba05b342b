// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Every rule has a table that fires it and one that does not, rules/KT000.fires.xml and rules/KT000.silent.xml. Each is
// checked against the phone in phone/, whose lock is on, and says in its first line what is found in it.

#include "rules.h"

#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>
#include <regex>

#include "checkTable.h"
#include "phoneImage/toolError.h"
#include "report.h"
#include "scratchFolder.h"
#include "tableCheckRun.h"

namespace
{

constexpr char kTables[] = "tests/tools/tableCheck/rules/";
constexpr char kPhone[] = "tests/tools/tableCheck/phone";

std::string TablePath(const Rule& rule, const std::string& kind)
{
    return SourcePath(kTables + std::string(rule.number) + "." + kind + ".xml");
}

Findings Check(const std::string& table, const std::string& image = SourcePath(kPhone))
{
    return CheckTable({table, image, ""});
}

/// Checks a table given as text.
std::string SummaryOf(const std::string& text, const std::string& image = "")
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("table.xml"), text);
    return Summary(Check(folder.Path("table.xml"), image));
}

std::string Announced(const std::string& table)
{
    std::smatch match;
    const std::string text = ReadBytes(table);
    return std::regex_search(text, match, std::regex("^<!-- finds: (.*) -->\n")) ? match[1].str() : "no first line";
}

std::string Record(const std::string& attributes)
{
    return "<t>\n<record srcFile='/config/user/user.ini' " + attributes + "/>\n</t>";
}

} // namespace

TEST(TableRules, EachHasATableThatFiresItAndOneThatDoesNot)
{
    for (const Rule& rule : Rules()) {
        for (const char* kind : {"fires", "silent"}) {
            const std::string table = TablePath(rule, kind);
            SCOPED_TRACE(table);
            ASSERT_TRUE(std::filesystem::exists(table));
            const std::string found = Summary(Check(table));
            EXPECT_EQ(found, Announced(table));
            EXPECT_EQ(found.find(rule.number) != std::string::npos, std::string(kind) == "fires");
        }
    }
}

TEST(TableRules, NoTableIsLeftOfARuleThatIsNone)
{
    for (const auto& entry : std::filesystem::directory_iterator(SourcePath(kTables)))
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
        const bool needsImage =
            (rule.number >= "KT022" && rule.number <= "KT029") || rule.number == "KT013" || rule.number == "KT014";
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

TEST(TableRules, PathsOfOneFileAreOneDestination)
{
    const std::string one = "<record srcFile='/config/a.ini' srcSec='S' srcKey='K' dstFile='/config/b.ini'/>\n";
    const std::string other = "<record srcFile='/config/c.ini' srcSec='S' srcKey='K' dstFile='/config/x/..//b.ini'/>\n";
    EXPECT_EQ(SummaryOf("<t>\n" + one + other + "</t>"), "KT010 at 3");
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
        EXPECT_EQ(SummaryOf("<t>\n" + std::string(row.records) + "</t>", SourcePath(kPhone)), row.found) << row.records;
}

TEST(TableRules, AnIntendedMistakeIsSuppressedWithItsConsequences)
{
    EXPECT_EQ(SummaryOf("<t><!-- kestrune-table-check: ignore KT005 -->"
                        "<r dstFile='/config/user/user.ini' dstSec='Audio' dstKey='nOld'/></t>",
                        SourcePath(kPhone)),
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

TEST(TableRules, ASecretThatBecomesPlainIsFound)
{
    struct Row {
        const char* records;
        const char* list;
        const char* found;
    };
    const Row rows[] = {
        // the list names the source
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>",
         "<e file='/config/a.ini' section='S' key='K'/>", "KT030 at 1"},
        {"<r srcFile='/config/./a.ini' srcSec='S' srcKey='K' dstFile='/config/b.ini'/>",
         "<e file='/config/a.ini' section='S' key='K'/>", "KT030 at 1"},
        {"<r srcFile='/config/user/voip/sipAccount2.cfg' srcSec='S' srcKey='K' dstKey='L'/>",
         "<e perAccount='true' section='S' key='K'/>", "KT030 at 1"},
        {"<r srcFile='/config/user/voip/sipAccount16.cfg' srcSec='S' srcKey='K' dstKey='L'/>", // never converted
         "<e perAccount='true' section='S' key='K'/>", "KT030 at 1"},
        // it does not, or does with the destination
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>",
         "<e file='/config/a.ini' section='S' key='M'/>", "nothing"},
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>",
         "<e file='/config/a.ini' section='S' key='K' active='false'/>", "nothing"},
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>",
         "<e file='/config/a.ini' section='S' key='K'/><e file='/config/a.ini' section='S' key='L'/>", "KT013 at 1"},
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L' dstEncrypt='true'/>",
         "<e file='/config/a.ini' section='S' key='K'/>", "KT014 at 1"},
        // the table says so, without a list
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='K' srcEncrypt='1'/>\n"
         "<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>",
         "", "KT030 at 2"},
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>\n"
         "<r srcFile='/config/a.ini' srcSec='S' srcKey='M' dstKey='K' dstEncrypt='1'/>",
         "", "KT030 at 1, KT012 at 2"},
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='K' srcEncrypt='0'/>\n"
         "<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>",
         "", "KT020 at 1"},
        // a record that carries the secret on
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='L' dstKey='M'/>\n"
         "<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>",
         "<e file='/config/a.ini' section='S' key='K'/>", "KT030 at 1, KT012 at 2, KT030 at 2"},
        // a circle ends
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>\n"
         "<r srcFile='/config/a.ini' srcSec='S' srcKey='L' dstKey='K'/>",
         "<e file='/config/a.ini' section='S' key='K'/>", "KT030 at 1, KT011 at 2, KT012 at 2, KT013 at 2"},
        // an emptied setting is no secret
        {"<r dstFile='/config/a.ini' dstSec='S' dstKey='L'/>", "", "KT005 at 1"},
    };
    for (const Row& row : rows) {
        const ScratchFolder folder;
        WriteBytes(folder.Path("table.xml"), "<t>" + std::string(row.records) + "</t>");
        WriteBytes(folder.Path("list.xml"), "<l>" + std::string(row.list) + "</l>");
        const std::string list = *row.list == '\0' ? "" : folder.Path("list.xml");
        EXPECT_EQ(Summary(CheckTable({folder.Path("table.xml"), /*image=*/"", list})), row.found) << row.records << "\n"
                                                                                                  << row.list;
    }
}

TEST(TableRules, PathsThatNoRecordCanMeanAreFound)
{
    struct Row {
        const char* path;
        const char* asDestination;
        const char* asSource;
    };
    const Row rows[] = {
        {"/config/a.ini", "nothing", "nothing"},
        {"/config/a%b.ini", "nothing", "nothing"},
        {"/config/my file.cfg", "nothing", "nothing"},
        {"/config/a.xml.ini", "nothing", "nothing"},
        {"/config/xml", "nothing", "nothing"},
        {"/config/a.xml", "KT031 at 2", "KT033 at 2"},
        {"/config/A.XML", "KT031 at 2", "KT033 at 2"},
        {"/config/a.pem", "KT031 at 2", "KT033 at 2"},
        {"/config/a.crt", "KT031 at 2", "KT033 at 2"},
        {"/config/a.key", "KT031 at 2", "KT033 at 2"},
        {"/config/voip/sipAccount*.cfg", "KT034 at 2", "KT034 at 2"},
        {"/config/voip/sipAccount?.cfg", "KT034 at 2", "KT034 at 2"},
        {"/config/voip/sipAccount%d.cfg", "KT034 at 2", "KT034 at 2"},
        {"/config/voip/sipAccount%s.cfg", "KT034 at 2", "KT034 at 2"},
        {"/config/voip/sipAccount%u.cfg", "KT034 at 2", "KT034 at 2"},
        {"/config/voip/sipAccount{n}.cfg", "KT034 at 2", "KT034 at 2"},
        {"/config/a.ini ", "KT034 at 2", "KT034 at 2"},
        {" /config/a.ini", "KT034 at 2", "KT034 at 2"},
        {"/config/a.ini&#9;", "KT034 at 2", "KT034 at 2"},
    };
    for (const Row& row : rows) {
        const std::string path = row.path;
        EXPECT_EQ(SummaryOf(Record("srcSec='S' srcKey='K' dstFile='" + path + "'")), row.asDestination) << path;
        EXPECT_EQ(SummaryOf("<t>\n<r srcFile='" + path + "' srcSec='S' srcKey='K' dstFile='/config/b.ini'/></t>"),
                  row.asSource)
            << path;
    }
}

TEST(TableRules, BlanksAtTheEndsOfASectionAreFound)
{
    const std::pair<const char*, const char*> rows[] = {
        {"S", "nothing"}, {"A B", "nothing"}, {"S ", "KT035 at 2"}, {"\tS", "KT035 at 2"}, {"&#32;S", "KT035 at 2"},
    };
    for (const auto& [section, found] : rows) {
        EXPECT_EQ(SummaryOf(Record("srcSec='" + std::string(section) + "' srcKey='K' dstSec='T'")), found) << section;
        EXPECT_EQ(SummaryOf(Record("srcSec='T' srcKey='K' dstSec='" + std::string(section) + "'")), found) << section;
    }
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

TEST(TableRules, PlacesThatSteerTheProgramAreFound)
{
    struct Row {
        const char* file;
        const char* section;
        const char* key;
        const char* found;
    };
    const Row rows[] = {
        {"/config/user/user.ini", "PhoneSetting", "EnLock", "KT032 at 2"},
        {"/config//user/../user/user.ini", "PhoneSetting", "EnLock", "KT032 at 2"},
        {"/config/user/user.ini", "Sync", "SyncCfgByVersion", "KT032 at 2"},
        {"/config/version.ini", "SyncConfig", "bEnableFromOld", "KT032 at 2"},
        {"/config/kestrune-pending", "any", "any", "KT032 at 2"},
        {"/config/kestrune-commit", "any", "any", "KT032 at 2"},
        {"/config/kestrune-handover", "any", "any", "KT032 at 2"},
        {"/config/user/user.ini", "PhoneSetting", "enlock", "nothing"},
        {"/config/user/user.ini", "SyncConfig", "bEnableFromOld", "nothing"},
        {"/config/system/system.ini", "PhoneSetting", "EnLock", "nothing"},
        {"/config/version.ini", "SyncConfig", "bOther", "nothing"},
    };
    for (const Row& row : rows) {
        const std::string place =
            std::string("dstFile='") + row.file + "' dstSec='" + row.section + "' dstKey='" + row.key;
        EXPECT_EQ(SummaryOf(Record("srcSec='S' srcKey='K' " + place + "'")), row.found) << place;
    }
}

TEST(TableRules, ANameCanSayThatAValueIsASecret)
{
    struct Row {
        const char* keys;
        const char* found;
    };
    const Row rows[] = {
        {"srcKey='strPwd' dstKey='strOther'", "KT037 at 2"},
        {"srcKey='strOther' dstKey='UnlockPIN'", "KT037 at 2"},
        {"srcKey='strPwd' dstKey='strListed' dstEncrypt='1'", "nothing"},
        {"srcKey='strPwd' dstKey='strListed'", "KT013 at 2"},
        {"srcKey='strListed' dstKey='strPwd'", "KT030 at 2"},
        {"srcKey='strPwd' dstKey='strInactive'", "nothing"},
        {"srcKey='strInactive' dstKey='strPwd'", "nothing"},
        {"srcKey='strPwd'", "KT020 at 2"},
        {"srcKey='bPassword' dstKey='bUsePassword'", "nothing"},
        {"srcKey='bpassword' dstKey='strOther'", "KT037 at 2"},
    };
    const ScratchFolder folder;
    WriteBytes(folder.Path("list.xml"),
               "<l><e file='/config/user/user.ini' section='S' key='strListed'/>"
               "<e file='/config/user/user.ini' section='S' key='strInactive' active='0'/></l>");
    for (const Row& row : rows) {
        WriteBytes(folder.Path("t"), Record("srcSec='S' " + std::string(row.keys)));
        EXPECT_EQ(Summary(CheckTable({folder.Path("t"), /*image=*/"", folder.Path("list.xml")})), row.found)
            << row.keys;
    }
}

TEST(TableRules, TheFindingNamesTheReasonForASecret)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("t"), "<t>\n"
                                 "<r srcFile='/config/a.ini' srcSec='S' srcKey='K' srcEncrypt='1'/>\n"
                                 "<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>\n"
                                 "<r srcFile='/config/a.ini' srcSec='S' srcKey='L' dstKey='M'/>\n"
                                 "</t>");
    const Findings findings = Check(folder.Path("t"), /*image=*/"");
    ASSERT_EQ(Summary(findings), "KT030 at 3, KT011 at 4, KT030 at 4");
    EXPECT_EQ(findings.front().text,
              "[S] K of /config/a.ini holds a secret (the record at line 2 writes it enciphered), and [S] L of "
              "/config/a.ini gets it plain, also on a locked phone");
    EXPECT_EQ(findings.back().text,
              "[S] L of /config/a.ini holds a secret (the record at line 3 writes a secret there), and [S] M of "
              "/config/a.ini gets it plain, also on a locked phone");
}

TEST(TableRules, AValueThatThePhoneHoldsEncipheredIsASecret)
{
    const std::string table = "<t>\n<r srcFile='/config/user/user.ini' srcSec='Secret' srcKey='strToken' dstKey='";
    EXPECT_EQ(SummaryOf(table + "strCommunity'/></t>", SourcePath(kPhone)), "KT030 at 2");
    EXPECT_EQ(SummaryOf(table + "strNew'/></t>", SourcePath(kPhone)), "KT013 at 2");
    EXPECT_EQ(SummaryOf(table + "strNew' dstEncrypt='1'/></t>", SourcePath(kPhone)), "nothing");
}

/// A quadratic check of so many records takes a quarter of a minute.
TEST(TableRules, ManyRecordsForOneFileOfTheImageTakeNoLongTime)
{
    const ScratchFolder folder;
    std::string records;
    std::string text = "[S]\n";
    for (int i = 0; i < 20000; ++i) {
        const std::string number = std::to_string(i);
        text += "K" + number + "=1\n";
        records += "<r srcFile='/config/a.ini' srcSec='S' srcKey='K" + number + "' dstKey='L" + number + "'/>\n";
    }
    WriteBytes(folder.Path("config/a.ini"), text);
    const std::clock_t begin = std::clock();
    EXPECT_NE(SummaryOf("<t>\n" + records + "</t>", folder.Path()), "nothing");
    EXPECT_LT(std::clock() - begin, 5 * CLOCKS_PER_SEC);
}

TEST(TableRules, TheImageIsReadAsTheStoreReadsIt)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("config/a.ini"), "\xEF\xBB\xBF"
                                            "Early=1\n[S]\nA=\nA=2\n[T]\nB=1\n[S]\nB=3\nC=4\n");
    const std::pair<const char*, const char*> rows[] = {
        {"dstSec='S' dstKey='A'", "KT020 at 2"}, // empty, the later one does not count
        {"dstSec='S' dstKey='B'", "KT025 at 2"}, // in the second section of that name
        {"dstSec='T' dstKey='B'", "KT025 at 2"},     {"dstSec='T' dstKey='C'", "KT028 at 2"},
        {"dstSec='S' dstKey='Early'", "KT028 at 2"}, // before the first section
    };
    for (const auto& [destination, found] : rows) {
        const std::string record =
            "<r srcFile='/config/a.ini' srcSec='S' srcKey='A' " + std::string(destination) + "/>";
        EXPECT_EQ(SummaryOf("<t>\n" + record + "</t>", folder.Path()), found) << destination;
    }
    const std::string early = "<r srcFile='/config/a.ini' srcSec='' srcKey='Early' dstSec='S' dstKey='X'/>\n";
    const std::string later = "<r srcFile='/config/a.ini' srcSec='S' srcKey='X' dstSec='T' dstKey='B'/>\n";
    EXPECT_EQ(SummaryOf("<t>\n" + early + later + "</t>", folder.Path()),
              "KT017 at 2, KT028 at 2, KT011 at 3, KT025 at 3"); // a key before the first section has no value
}

TEST(TableRules, AFileOfTheImageIsKnownByItsContent)
{
    struct Row {
        std::string content;
        const char* asDestination;
        const char* asSource;
    };
    const std::string keys = "[S]\nK=1\n";
    const Row rows[] = {
        {keys, "nothing", "nothing"},
        {"\xEF\xBB\xBF" + keys, "nothing", "nothing"},
        {"; < a comment\n" + keys, "nothing", "nothing"},
        {"<?xml version='1.0'?>\n" + keys, "KT031 at 2", "KT033 at 2"},
        {"\xEF\xBB\xBF\r\n <a>\n" + keys, "KT031 at 2", "KT033 at 2"},
        {"-----BEGIN CERTIFICATE-----\n" + keys, "KT031 at 2", "KT033 at 2"},
        {std::string("\0", 1) + "\n" + keys, "KT031 at 2", "KT033 at 2"},
    };
    for (const Row& row : rows) {
        const ScratchFolder folder;
        WriteBytes(folder.Path("config/user/user.ini"), keys);
        WriteBytes(folder.Path("config/a.dat"), row.content);
        EXPECT_EQ(SummaryOf(Record("srcSec='S' srcKey='K' dstFile='/config/a.dat'"), folder.Path()), row.asDestination)
            << row.content;
        EXPECT_EQ(
            SummaryOf("<t>\n<r srcFile='/config/a.dat' srcSec='S' srcKey='K' dstFile='/config/user/user.ini'/></t>",
                      folder.Path()),
            row.asSource)
            << row.content;
    }
}

TEST(TableRules, AFolderInPlaceOfAFileDoesNotLoad)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("config/user/user.ini/file"), "");
    EXPECT_EQ(SummaryOf(Record("srcSec='S' srcKey='K' dstKey='L'"), folder.Path()), "KT022 at 2");
}

TEST(TableRules, LinksAndDotsDoNotLeadOutOfTheImage)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("outside.ini"), "[S]\nK=1\n");
    WriteBytes(folder.Path("phone/config/user/user.ini"), "[S]\nK=1\n");
    const std::string files[] = {"/config/up.ini", "/config/absolute.ini", "/config/../../outside.ini"};
    std::filesystem::create_symlink("../../outside.ini", folder.Path("phone/config/up.ini"));
    std::filesystem::create_symlink(folder.Path("outside.ini"), folder.Path("phone/config/absolute.ini"));
    for (const std::string& file : files) {
        const std::string table = Record("srcSec='S' srcKey='K' dstFile='" + file + "'");
        const std::string found = SummaryOf(table, folder.Path("phone"));
        EXPECT_NE(found.find("KT022 at 2"), std::string::npos) << file << ": " << found;
    }
}

TEST(TableRules, TheKeyOfTheImageDecidesWhatIsEnciphered)
{
    const std::string table = TablePath(*FindRule("KT027"), "silent");
    EXPECT_EQ(Summary(Check(table)), "nothing");
    const ScratchFolder folder;
    std::filesystem::copy(SourcePath(kPhone), folder.Path("phone"),
                          std::filesystem::copy_options::recursive | std::filesystem::copy_options::copy_symlinks);
    const std::string key = folder.Path("phone/phone/factory/certs/pwcipher.key");
    std::filesystem::remove(key); // the development key does not decipher the token, which is too long for a plain text
    EXPECT_EQ(Summary(Check(table, folder.Path("phone"))), "KT027 at 5");
    WriteBytes(key, "no key");
    EXPECT_EQ(Summary(Check(table, folder.Path("phone"))), "KT027 at 3, KT027 at 5");
}

TEST(TableRules, WithoutTheImageThatWasAskedForNothingIsChecked)
{
    const std::string table = TablePath(*FindRule("KT005"), "fires");
    EXPECT_THROW(Check(table, SourcePath("none")), ToolError);
    EXPECT_THROW(Check(table, table), ToolError);
}

TEST(TableRules, TheImageIsNeverChanged)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("config/user/user.ini"), "[S]\nK=1\n");
    std::filesystem::permissions(folder.Path("config/user/user.ini"), std::filesystem::perms::owner_read);
    EXPECT_EQ(SummaryOf(Record("srcSec='S' srcKey='K' dstKey='L'"), folder.Path()), "KT028 at 2");
    EXPECT_EQ(ReadBytes(folder.Path("config/user/user.ini")), "[S]\nK=1\n");
    EXPECT_EQ(std::distance(std::filesystem::recursive_directory_iterator(folder.Path()), {}), 3);
}
