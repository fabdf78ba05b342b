// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Whole runs of kestrune-table-check over many images.

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "scratchFolder.h"
#include "tableCheckRun.h"

namespace fs = std::filesystem;
using Json = nlohmann::json;

namespace
{

const std::string kMoves = "<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>\n";

/// Phones in a folder, and a table.
class CheckImages : public testing::Test
{
protected:
    /// @param keys  content of the section that the table reads
    void AddPhone(const std::string& name, const std::string& keys)
    {
        WriteBytes(In(name + "/config/a.ini"), "[S]\n" + keys);
    }

    void AddArchive(const std::string& name, const std::string& keys, const std::string& options)
    {
        AddPhone("made/" + name, keys);
        RunProcess({"tar", "-C", In("made/" + name), options, In(name), "config"}, {"PATH=/usr/bin:/bin"});
        fs::remove_all(In("made"));
    }

    std::string Table(const std::string& records) const
    {
        WriteBytes(In("table.xml"), "<t>\n" + records + "</t>");
        return In("table.xml");
    }

    std::string In(const std::string& name) const { return folder_.Path(name); }

private:
    ScratchFolder folder_;
};

Json JsonOf(std::vector<std::string> arguments)
{
    arguments.emplace_back("--format=json");
    const ProcessResult result = RunTableCheck(arguments);
    EXPECT_EQ(result.errors, "");
    return Json::parse(result.output);
}

/// @return "KT025 at 2 on 3, KT010 at 3"
std::string CountsOf(const Json& report)
{
    std::string counts;
    for (const Json& finding : report.at("findings")) {
        counts += (counts.empty() ? "" : ", ") + finding.at("rule").get<std::string>() + " at " +
                  std::to_string(finding.at("line").get<int>());
        EXPECT_EQ(finding.contains("images"), finding.contains("example"));
        if (finding.contains("images"))
            counts += " on " + std::to_string(finding.at("images").get<int>());
    }
    return counts;
}

} // namespace

TEST_F(CheckImages, AFindingIsReportedOnceWithItsCountAndTheFirstImage)
{
    AddPhone("backups/c", "L=2\n");
    AddArchive("backups/b.tar.gz", "L=1\n", "-czf");
    AddArchive("backups/a.tar", "K=1\nL=1\n", "-cf");
    const std::string table = Table(kMoves + "<r srcFile='/config/b.ini' srcSec='S' srcKey='K' dstKey='L'/>\n");
    const std::string emptied = "the image has no key [S] K of /config/a.ini: the value of [S] L of /config/a.ini is "
                                "set to empty, and lost (on 2 of 3 images, the first is " +
                                In("backups/b.tar.gz") + ")";
    const std::string missing = "the image has no file \"/config/b.ini\" that loads: the pass ends here (on 3 of 3 "
                                "images, the first is " +
                                In("backups/a.tar") + ")";

    const ProcessResult text = RunTableCheck({"--root", In("backups"), table});
    EXPECT_EQ(text.output,
              table + ":2: error: " + emptied + " [KT025]\n" + table + ":3: error: " + missing + " [KT022]\n");
    EXPECT_EQ(text.errors, "");
    EXPECT_EQ(text.exitStatus, 2);
    EXPECT_EQ(RunTableCheck({"--root", In("backups"), "--format=github", table}).output,
              "::error file=" + table + ",line=2,title=KT025::" + emptied + "\n::error file=" + table +
                  ",line=3,title=KT022::" + missing + "\n");
    const Json expected = {
        {"version", 1},
        {"table", table},
        {"images", 3},
        {"failed", Json::array()},
        {"errors", 2},
        {"warnings", 0},
        {"notes", 0},
        {"findings",
         {{{"line", 2},
           {"severity", "error"},
           {"rule", "KT025"},
           {"text", emptied.substr(0, emptied.find(" (on"))},
           {"images", 2},
           {"example", In("backups/b.tar.gz")}},
          {{"line", 3},
           {"severity", "error"},
           {"rule", "KT022"},
           {"text", missing.substr(0, missing.find(" (on"))},
           {"images", 3},
           {"example", In("backups/a.tar")}}}},
    };
    EXPECT_EQ(JsonOf({"--root", In("backups"), table}), expected);
}

TEST_F(CheckImages, WhatDoesNotDependOnTheImageHasNoCount)
{
    AddPhone("a", "K=1\n");
    AddPhone("b", "K=1\nL=1\n");
    WriteBytes(In("list.xml"), "<l><e file='/config/a.ini' section='S' key='L'/></l>");
    const std::string table = Table(kMoves + kMoves);
    EXPECT_EQ(CountsOf(JsonOf({"--root", In("a"), In("b"), table})), "KT028 at 2 on 1, KT010 at 3");
    EXPECT_EQ(CountsOf(JsonOf({"--root", In("a"), In("b"), "--entry-list", In("list.xml"), table})),
              "KT013 at 2, KT028 at 2 on 1, KT040 at 2, KT010 at 3, KT013 at 3, KT040 at 3");
    fs::create_directories(In("b/phone/resource"));
    fs::copy(In("list.xml"), In("b/phone/resource/encryptconfig.xml"));
    EXPECT_EQ(CountsOf(JsonOf({"--root", In("a"), In("b"), table})),
              "KT013 at 2 on 1, KT028 at 2 on 1, KT040 at 2 on 1, KT010 at 3, KT013 at 3 on 1, KT040 at 3 on 1");
}

TEST_F(CheckImages, WhatAListOfSomeImagesSettlesIsCountedOnTheOthers)
{
    AddPhone("a", "strPassword=\nL=\n");
    AddPhone("b", "strPassword=\nL=\n");
    WriteBytes(In("b/phone/resource/encryptconfig.xml"),
               "<l><e file='/config/a.ini' section='S' key='L' active='0'/><e file='/config/a.ini' section='S' "
               "key='strPassword' active='0'/></l>");
    const std::string table = Table("<r srcFile='/config/a.ini' srcSec='S' srcKey='strPassword' dstKey='L'/>\n");
    EXPECT_EQ(CountsOf(JsonOf({table})), "KT037 at 2");
    EXPECT_EQ(CountsOf(JsonOf({"--root", In("a"), In("a/"), table})), "KT037 at 2");
    const std::string onBoth = CountsOf(JsonOf({"--root", In("a"), In("b"), table}));
    EXPECT_THAT(onBoth, testing::HasSubstr("KT037 at 2 on 1"));
}

TEST_F(CheckImages, SizesOfValuesDoNotDivideAFinding)
{
    const std::string table =
        Table("<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L' dstEncrypt='true'/>\n");
    AddPhone("a", "L=\nK=" + std::string(160, 'x') + "\n");
    AddPhone("b", "L=\nK=" + std::string(171, 'y') + "\n");
    const Json report = JsonOf({"--root", In("a"), In("b"), table});
    EXPECT_EQ(CountsOf(report), "KT026 at 2 on 2, KT039 at 2 on 2");
    EXPECT_THAT(report.at("findings").at(0).at("text"), testing::StartsWith("the value has 160 bytes, too many"));
}

TEST_F(CheckImages, TwoRecordsOfALineCountOnce)
{
    AddPhone("a", "");
    AddPhone("b", "");
    std::string record = "<r srcFile='/config/none.ini' srcSec='S' srcKey='K' dstFile='/config/a.ini'/>";
    const Json report = JsonOf({"--root", In("a"), In("b"), Table(record + record + "\n")});
    EXPECT_THAT(CountsOf(report), testing::HasSubstr("KT023 at 2 on 2"));
}

TEST_F(CheckImages, OneImageHasNoCount)
{
    AddPhone("backups/unpacked/desk", "L=1\n");
    AddArchive("a.tar", "L=1\n", "-cf");
    AddArchive("a.tgz", "L=1\n", "-czf");
    WriteBytes(In("list"), "# one\n" + In("a.tar") + "\n");
    const std::string table = Table(kMoves);
    const std::string one = RunTableCheck({"--root", In("backups/unpacked/desk"), table}).output;
    EXPECT_THAT(one, testing::HasSubstr(":2: error: the image has no key"));
    EXPECT_THAT(one, testing::EndsWith(", and lost [KT025]\n"));
    for (const std::string& image : {In("backups/unpacked"), In("backups"), In("a.tar"), In("a.tgz"), "@" + In("list")})
        EXPECT_EQ(RunTableCheck({"--root", image, table}).output, one) << image;
    const Json report = JsonOf({"--root", In("a.tar"), table});
    EXPECT_EQ(CountsOf(report), "KT025 at 2");
    EXPECT_FALSE(report.contains("images") || report.contains("failed"));
}

TEST_F(CheckImages, AnImageThatCannotBeReadIsNamedAndTheOthersAreChecked)
{
    AddPhone("a", "L=1\n");
    WriteBytes(In("b.tar"), "no\x1b archive");
    AddPhone("c", "L=1\n");
    const std::string table = Table(kMoves);
    const ProcessResult result =
        RunTableCheck({"--format=json", "--root", In("a"), In("b.tar"), In("none"), In("c"), "--", table});
    EXPECT_THAT(result.errors, testing::MatchesRegex("kestrune-table-check: " + In("b.tar") + ": [ -~]+\n" +
                                                     "kestrune-table-check: " + In("none") + ": no such image\n"));
    const Json report = Json::parse(result.output);
    EXPECT_EQ(report.at("images"), 2);
    EXPECT_EQ(CountsOf(report), "KT025 at 2 on 2");
    EXPECT_EQ(report.at("failed").size(), 2u);
    EXPECT_EQ(report.at("failed").at(1), Json({{"image", In("none")}, {"reason", "no such image"}}));
    EXPECT_EQ(result.exitStatus, 2);
}

TEST_F(CheckImages, AnImageThatCannotBeReadIsAnErrorOfItsOwn)
{
    AddPhone("a", "K=1\nL=1\n");
    const ProcessResult result = RunTableCheck({"--root", In("a"), In("none"), Table(kMoves)});
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.exitStatus, 2);
}

TEST_F(CheckImages, WithoutAnyImageThatCanBeReadNothingIsChecked)
{
    const std::string table = Table(kMoves);
    fs::create_directories(In("empty"));
    const std::vector<std::vector<std::string>> rows = {
        {"--root", In("none"), table},
        {"--root", In("none"), In("gone"), table},
        {"--root", In("empty"), table},
        {"--root", "@" + In("none"), table},
    };
    for (const std::vector<std::string>& arguments : rows) {
        const ProcessResult result = RunTableCheck(arguments);
        EXPECT_EQ(result.exitStatus, 3) << arguments.at(1);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, testing::HasSubstr(arguments.at(1).substr(arguments.at(1).find('/'))));
    }
}

TEST_F(CheckImages, TheTableMayComeBeforeOrAfterTheImages)
{
    AddPhone("a", "L=1\n");
    AddPhone("b", "L=1\n");
    const std::string table = Table(kMoves);
    const std::string expected = RunTableCheck({"--root", In("a"), In("b"), "--", table}).output;
    EXPECT_THAT(expected, testing::HasSubstr("on 2 of 2 images"));
    const std::vector<std::vector<std::string>> rows = {
        {"--root", In("a"), In("b"), table},
        {"--root", In("a"), "--root", In("b"), table},
        {table, "--root", In("a"), In("b")},
        {"--root", In("a"), In("b"), "--format=text", table},
        {"--root", In("a"), In("b"), table, "--format=text"},
        {"--root", In("a"), In("b"), In("a"), table},
    };
    for (const std::vector<std::string>& arguments : rows)
        EXPECT_EQ(RunTableCheck(arguments).output, expected) << testing::PrintToString(arguments);
}

TEST_F(CheckImages, TheFirmwareReplacesThePhonesOwn)
{
    const std::string table = Table("<r srcFile='/phone/new.ini' srcSec='S' srcKey='K' dstFile='/config/a.ini'/>\n"
                                    "<r srcFile='/phone/old.ini' srcSec='S' srcKey='K' dstFile='/config/a.ini'/>\n");
    AddPhone("a", "K=\n");
    WriteBytes(In("a/phone/old.ini"), "[S]\nK=\n");
    AddPhone("b", "K=\n");
    WriteBytes(In("firmware/phone/new.ini"), "[S]\nK=\n");
    WriteBytes(In("firmware/config/b.ini"), "[S]\n");
    RunProcess({"tar", "-C", In(""), "-czf", In("firmware.tar.gz"), "firmware"}, {"PATH=/usr/bin:/bin"});
    EXPECT_EQ(CountsOf(JsonOf({"--root", In("a"), In("b"), table})), "KT023 at 2 on 2, KT010 at 3, KT023 at 3 on 1");
    for (const char* firmware : {"firmware", "firmware.tar.gz"}) {
        EXPECT_EQ(CountsOf(JsonOf({"--firmware", In(firmware), "--root", In("a"), In("b"), table})),
                  "KT010 at 3, KT023 at 3 on 2")
            << firmware;
        EXPECT_EQ(CountsOf(JsonOf({"--root", In("a"), table, "--firmware", In(firmware)})), "KT010 at 3, KT023 at 3");
    }
    EXPECT_TRUE(fs::exists(In("a/phone/old.ini")) && fs::exists(In("firmware/phone/new.ini")));
}

TEST_F(CheckImages, NothingOfAPhoneIsLeftForTheNext)
{
    fs::create_directories(In("firmware/phone"));
    WriteBytes(In("firmware/config/z.ini"), "[S]\nK=1\n");
    AddPhone("a", "L=1\nK=1\n");
    WriteBytes(In("a/config/z.ini"), "[S]\nK=1\n");
    WriteBytes(In("a/tmp/z.ini"), "[S]\nK=1\n");
    AddPhone("b", "L=1\n");
    const std::string table = Table("<r srcFile='/config/z.ini' srcSec='S' srcKey='K' dstFile='/config/a.ini'/>\n"
                                    "<r srcFile='/tmp/z.ini' srcSec='S' srcKey='K' dstFile='/config/a.ini'/>\n");
    const Json report = JsonOf({"--firmware", In("firmware"), "--root", In("a"), In("b"), table});
    EXPECT_EQ(CountsOf(report), "KT023 at 2 on 1, KT028 at 2 on 1, KT010 at 3, KT023 at 3 on 1");
    EXPECT_EQ(report.at("findings").at(0).at("example"), In("b"));
}

TEST_F(CheckImages, TheCipherKeyOfThePhoneStaysUnlessTheFirmwareHasOne)
{
    const std::string key = "/factory/certs/pwcipher.key";
    fs::copy(TestPhone(), In("phone"), fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    fs::create_directories(In("firmware/phone/resource"));
    fs::copy(TestPhone() + "/phone/resource", In("firmware/phone/resource"));
    const std::string table = TablePath(*FindRule("KT027"), "silent");
    const std::vector<std::string> arguments = {"--firmware", In("firmware"), "--root", In("phone"), table};
    EXPECT_EQ(RunTableCheck(arguments).output, "");
    EXPECT_TRUE(fs::exists(In("phone/phone" + key)));
    WriteBytes(In("firmware/phone" + key), "no key");
    EXPECT_EQ(CountsOf(JsonOf(arguments)), "KT027 at 3, KT027 at 5");
}

TEST_F(CheckImages, AFirmwareThatCannotBeUsedEndsTheCheck)
{
    AddPhone("a", "K=1\nL=1\n");
    WriteBytes(In("text"), "");
    const std::string table = Table(kMoves);
    EXPECT_EQ(RunTableCheck({"--root", In("a"), table}).exitStatus, 0);
    const std::vector<std::vector<std::string>> rows = {
        {"--firmware", In("none"), "--root", In("a"), table}, {"--firmware", "", "--root", In("a"), table},
        {"--firmware", In("a"), "--root", In("a"), table},                                        // no folder phone
        {"--firmware", In("text"), "--root", In("a"), table}, {"--firmware", TestPhone(), table}, // no image
    };
    for (const std::vector<std::string>& arguments : rows) {
        const ProcessResult result = RunTableCheck(arguments);
        EXPECT_EQ(result.exitStatus, 3) << testing::PrintToString(arguments);
        EXPECT_EQ(result.output, "");
        EXPECT_NE(result.errors, "");
    }
}

TEST_F(CheckImages, CopiesOfPhonesAreRemoved)
{
    AddArchive("a.tar", "L=1\n", "-cf");
    AddArchive("b.tar", "L=1\n", "-cf");
    fs::create_directories(In("firmware/phone"));
    fs::create_directories(In("tmp"));
    const std::string table = Table(kMoves);
    const ProcessResult result = RunProcess({TableCheckFolder() + "/kestrune-table-check", "--firmware", In("firmware"),
                                             "--root", In("a.tar"), In("b.tar"), table},
                                            {"TMPDIR=" + In("tmp")});
    EXPECT_EQ(result.exitStatus, 2) << result.errors;
    EXPECT_TRUE(fs::is_empty(In("tmp")));
}
