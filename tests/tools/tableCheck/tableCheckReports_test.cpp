// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Whole runs of kestrune-table-check: what it prints, and its exit status.

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "scratchFolder.h"
#include "tableCheckRun.h"

namespace
{

constexpr char kText[] =
    "reports.xml:3: warning: [Audio] nNew of /config/user/user.ini has been written by the record at line 2 and is "
    "overwritten [KT010]\n"
    "reports.xml:5: warning: srcEncrypt=\"50%,:yes\" is not a boolean: the attribute counts as absent [KT007]\n"
    "reports.xml:5: note: srcEncrypt is never read: dstEncrypt is given [KT009]\n"
    "reports.xml:6: error: the record has no attribute dstFile or srcFile: the pass ends here [KT006]\n";

constexpr char kGithub[] =
    "::warning file=reports.xml,line=3,title=KT010::[Audio] nNew of /config/user/user.ini has been written by the "
    "record at line 2 and is overwritten\n"
    "::warning file=reports.xml,line=5,title=KT007::srcEncrypt=\"50%25,:yes\" is not a boolean: the attribute counts "
    "as "
    "absent\n"
    "::notice file=reports.xml,line=5,title=KT009::srcEncrypt is never read: dstEncrypt is given\n"
    "::error file=reports.xml,line=6,title=KT006::the record has no attribute dstFile or srcFile: the pass ends here\n";

constexpr char kJson[] = R"({
  "version": 1,
  "table": "suppressed.xml",
  "errors": 2,
  "warnings": 4,
  "notes": 0,
  "findings": [
    {
      "line": 5,
      "severity": "warning",
      "rule": "KT004",
      "text": "attribute \"comment\" is unknown and ignored"
    },
    {
      "line": 5,
      "severity": "error",
      "rule": "KT005",
      "text": "the record has no attribute srcFile, srcSec, srcKey: nothing is read, and [Audio] nThird of /config/user/user.ini is set to empty"
    },
    {
      "line": 6,
      "severity": "warning",
      "rule": "KT021",
      "text": "no record follows the comment: nothing is suppressed"
    },
    {
      "line": 7,
      "severity": "warning",
      "rule": "KT004",
      "text": "attribute \"comment\" is unknown and ignored"
    },
    {
      "line": 7,
      "severity": "error",
      "rule": "KT005",
      "text": "the record has no attribute srcFile, srcSec, srcKey: nothing is read, and [Audio] nFourth of /config/user/user.ini is set to empty"
    },
    {
      "line": 7,
      "severity": "warning",
      "rule": "KT018",
      "text": "the text between records is never read"
    }
  ]
}
)";

} // namespace

TEST(TableCheckReports, TextNamesFileLineSeverityAndRule)
{
    const ProcessResult result = RunTableCheck({"reports.xml"});
    EXPECT_EQ(result.output, kText);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(RunTableCheck({"--format", "text", "reports.xml"}).output, kText);
}

TEST(TableCheckReports, GithubGetsWorkflowCommands)
{
    const ProcessResult result = RunTableCheck({"--format=github", "reports.xml"});
    EXPECT_EQ(result.output, kGithub);
    EXPECT_EQ(result.exitStatus, 2);
}

TEST(TableCheckReports, JsonListsWhatIsNotSuppressed)
{
    const ProcessResult result = RunTableCheck({"--format=json", "suppressed.xml"});
    EXPECT_EQ(result.output, kJson);
    EXPECT_EQ(result.exitStatus, 2);
}

TEST(TableCheckReports, TextAndGithubSumUpTheNotesOfARule)
{
    const std::string text =
        "the image has no key [Audio] nMade of /config/user/user.ini: it is added (the first of 2 such "
        "records, the last is at line 4)";
    EXPECT_EQ(RunTableCheck({"--root", "phone", "rules/KT028.fires.xml"}).output,
              "rules/KT028.fires.xml:3: note: " + text + " [KT028]\n");
    EXPECT_EQ(RunTableCheck({"--root", "phone", "--format=github", "rules/KT028.fires.xml"}).output,
              "::notice file=rules/KT028.fires.xml,line=3,title=KT028::" + text + "\n");
    const std::string json = RunTableCheck({"--root", "phone", "--format=json", "rules/KT028.fires.xml"}).output;
    EXPECT_EQ(nlohmann::json::parse(json).at("findings").size(), 2u);
    EXPECT_EQ(nlohmann::json::parse(json).at("notes"), 2);
    const std::string warnings = RunTableCheck({"rules/KT007.fires.xml"}).output;
    EXPECT_EQ(std::count(warnings.begin(), warnings.end(), '\n'), 2);
}

TEST(TableCheckReports, TheExampleHasAShortReport)
{
    const std::string table = SourcePath("examples/phone/phone/resource/kestrune.xml");
    const ProcessResult result = RunTableCheck({"--root", SourcePath("examples/phone"), table});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_LE(std::count(result.output.begin(), result.output.end(), '\n'), 2) << result.output;
}

TEST(TableCheckReports, JsonOfACleanTableHasNoFindings)
{
    const ProcessResult result = RunTableCheck({"--format=json", "rules/KT010.silent.xml"});
    EXPECT_EQ(nlohmann::json::parse(result.output).at("findings"), nlohmann::json::array());
    EXPECT_EQ(result.exitStatus, 0);
}

TEST(TableCheckReports, ControlBytesOfATableAreEscaped)
{
    const std::string name = "attribute \"comment\\u202e\\x9b2J\" is unknown and ignored";
    const std::string flag =
        "dstEncrypt=\"\\x1b]0;title\\x07\\n::error::\\x7f\" is not a boolean: the attribute counts as absent";
    const auto report = nlohmann::json::parse(RunTableCheck({"--format=json", "control-bytes.xml"}).output);
    EXPECT_EQ(report.at("findings").at(0).at("text"), name);
    EXPECT_EQ(report.at("findings").at(1).at("text"), flag);
    const std::string refusal = report.at("findings").at(2).at("text"); // in the words of the other parser
    EXPECT_THAT(refusal, testing::MatchesRegex("other XML parsers refuse the table: [ -~]+"));
    EXPECT_EQ(RunTableCheck({"control-bytes.xml"}).output,
              "control-bytes.xml:3: warning: " + name + " [KT004]\ncontrol-bytes.xml:3: warning: " + flag +
                  " [KT007]\ncontrol-bytes.xml:3: warning: " + refusal + " [KT036]\n");
    const std::string command = "::warning file=control-bytes.xml,line=3,title=";
    EXPECT_EQ(RunTableCheck({"--format=github", "control-bytes.xml"}).output, command + "KT004::" + name + "\n" +
                                                                                  command + "KT007::" + flag + "\n" +
                                                                                  command + "KT036::" + refusal + "\n");
}

TEST(TableCheckReports, ControlBytesOfAPathAreEscaped)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("no\x1b[31m\n::error::\xff,:%");
    WriteBytes(path, "");
    EXPECT_EQ(RunTableCheck({path}).output,
              folder.Path("no\\x1b[31m\\n::error::\\xff,:%") +
                  ":1: error: the table does not load, and no value is moved: Error document empty. [KT001]\n");
    EXPECT_EQ(RunTableCheck({"--format=github", path}).output,
              "::error file=" + folder.Path("no\\x1b[31m\\n%3A%3Aerror%3A%3A\\xff%2C%3A%25") +
                  ",line=1,title=KT001::the table does not load, and no value is moved: Error document empty.\n");
    const std::string json = RunTableCheck({"--format=json", path}).output;
    EXPECT_EQ(json.find('\x1b'), std::string::npos);
    EXPECT_NE(json.find(R"(/no\u001b[31m\n::error::\ufffd,:%")"), std::string::npos) << json;
}

TEST(TableCheckReports, LettersOutsideAsciiAreShownAsTheyAre)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("tëst/Größe.xml");
    WriteBytes(path, "<t><r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L' größe='1'/></t>");
    const std::string text = "attribute \"größe\" is unknown and ignored";
    EXPECT_EQ(RunTableCheck({path}).output, path + ":1: warning: " + text + " [KT004]\n");
    EXPECT_EQ(RunTableCheck({"--format=github", path}).output,
              "::warning file=" + path + ",line=1,title=KT004::" + text + "\n");
}

TEST(TableCheckReports, TheWorstFindingMakesTheExitStatus)
{
    struct Row {
        std::vector<std::string> arguments;
        int exitStatus;
    };
    const Row rows[] = {
        {{"rules/KT010.silent.xml"}, 0},
        {{"rules/KT009.fires.xml"}, 0}, // a note
        {{"rules/KT010.fires.xml"}, 1},
        {{"rules/KT005.fires.xml"}, 2},
        {{"--root", "phone", "rules/KT028.fires.xml"}, 0},
        {{"--root", "phone", "rules/KT024.fires.xml"}, 1},
        {{"--root", "phone", "rules/KT025.fires.xml"}, 2},
        {{"rules/KT025.fires.xml"}, 0}, // without the phone
        {{"--severity", "error", "rules/KT010.fires.xml"}, 0},
        {{"--severity", "warning", "rules/KT010.fires.xml"}, 1},
    };
    for (const Row& row : rows) {
        const ProcessResult result = RunTableCheck(row.arguments);
        EXPECT_EQ(result.exitStatus, row.exitStatus) << row.arguments.back() << "\n" << result.output;
        EXPECT_EQ(result.errors, "");
    }
}

TEST(TableCheckReports, WhatCannotBeCheckedHasAStatusOfItsOwn)
{
    const std::vector<std::string> rows[] = {
        {},
        {"none.xml"},
        {"phone"}, // a folder
        {"reports.xml/table.xml"},
        {"--root", "none", "reports.xml"},
        {"--root", "", "reports.xml"}, // a variable that is not set must not pass for a checked image
        {"--root", "reports.xml", "reports.xml"},
        {"--entry-list", "none.xml", "reports.xml"},
        {"--entry-list", "", "reports.xml"},
        {"--entry-list", "rules/KT001.fires.xml", "reports.xml"},
        {"--format", "xml", "reports.xml"},
        {"--severity", "2", "reports.xml"},
        {"--explain", "KT999"},
        {"--unknown", "reports.xml"},
        {"reports.xml", "reports.xml"},
    };
    for (const std::vector<std::string>& arguments : rows) {
        const ProcessResult result = RunTableCheck(arguments);
        EXPECT_EQ(result.exitStatus, 3) << (arguments.empty() ? "" : arguments.front());
        EXPECT_EQ(result.output, "");
        EXPECT_NE(result.errors, "");
    }
}

TEST(TableCheckReports, ATableWithoutReadPermissionCannotBeRead)
{
    const ScratchFolder folder;
    const std::string table = folder.Path("table.xml");
    WriteBytes(table, "<t/>");
    std::filesystem::permissions(table, std::filesystem::perms::none);
    const ProcessResult result = RunTableCheckWithoutPrivileges({table});
    EXPECT_EQ(result.errors, "kestrune-table-check: the table cannot be read: " + table + ": Permission denied\n");
    EXPECT_EQ(result.exitStatus, 3);
}

TEST(TableCheckReports, WhatTheImageHidesCannotBeRead)
{
    const std::pair<const char*, const char*> rows[] = {
        {"config/user/user.ini", "a file of the image cannot be read: "},
        {"config/user", "cannot look up /config/user/user.ini in the image: Permission denied"},
        {"phone/factory/certs/pwcipher.key", "the image's cipher key cannot be read: "},
    };
    for (const auto& [path, words] : rows) {
        const ScratchFolder folder;
        WriteBytes(folder.Path("config/user/user.ini"), "[Audio]\nnOld=1\n");
        WriteBytes(folder.Path("phone/factory/certs/pwcipher.key"), "no key");
        std::filesystem::permissions(folder.Path(path), std::filesystem::perms::none);
        const ProcessResult result =
            RunTableCheckWithoutPrivileges({"--root", folder.Path(), "rules/KT005.silent.xml"});
        std::filesystem::permissions(folder.Path(path), std::filesystem::perms::owner_all);
        EXPECT_EQ(result.exitStatus, 3) << result.output;
        EXPECT_NE(result.errors.find(words), std::string::npos) << result.errors;
    }
}

TEST(TableCheckReports, ANoteCanBeLeftOut)
{
    EXPECT_EQ(RunTableCheck({"--severity=warning", "rules/KT009.fires.xml"}).output, "");
    EXPECT_EQ(RunTableCheck({"--severity=error", "reports.xml"}).output,
              std::string(kText).substr(std::string(kText).find("reports.xml:6")));
}

TEST(TableCheckReports, AnEntryListReplacesThatOfTheImage)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("list.xml"), "<l><e file='/config/user/user.ini' section='Audio' key='nNew'/>"
                                        "<e file='/config/user/user.ini' section='Audio' key='nOld' active='0'/></l>");
    const std::string found = "rules/KT005.silent.xml:3: warning: [Audio] nNew of /config/user/user.ini is kept "
                              "enciphered, but the encrypt flag is off: it is written plain [KT013]\n";
    EXPECT_EQ(RunTableCheck({"rules/KT005.silent.xml"}).output, "");
    EXPECT_EQ(RunTableCheck({"--entry-list", folder.Path("list.xml"), "rules/KT005.silent.xml"}).output, found);
    EXPECT_EQ(RunTableCheck({"--root", "phone", "rules/KT005.silent.xml"}).output, "");
    EXPECT_EQ(
        RunTableCheck({"--root", "phone", "--entry-list", folder.Path("list.xml"), "rules/KT005.silent.xml"}).output,
        found);
}

TEST(TableCheckReports, ValuesOfThePhoneAreNeverPrinted)
{
    for (const char* rule : {"KT025", "KT026", "KT027"}) {
        const std::string output =
            RunTableCheck({"--root", "phone", "rules/" + std::string(rule) + ".fires.xml"}).output;
        EXPECT_NE(output, "");
        for (const char* value : {"heron", "otter", "zzz", "yyy", "caf", "4711"})
            EXPECT_EQ(output.find(value), std::string::npos) << output;
    }
}

TEST(TableCheckReports, ExplainNamesEffectAndRemedy)
{
    const ProcessResult result = RunTableCheck({"--explain", "KT010"});
    EXPECT_EQ(RunTableCheck({"--explain", "kt010"}).output, result.output);
    EXPECT_EQ(result.output, "KT010 warning: Two records with one destination\n"
                             "\n"
                             "Records are processed from top to bottom, and the later one overwrites what\n"
                             "the earlier one wrote, also with an empty value.\n"
                             "\n"
                             "What to do:\n"
                             "Keep one of the two.\n");
    EXPECT_EQ(result.exitStatus, 0);
}
