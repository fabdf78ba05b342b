// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// What the rules see of an image.

#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>

#include "phoneImage/toolError.h"
#include "rules.h"
#include "scratchFolder.h"
#include "tableCheckRun.h"

/// A quadratic check of so many records takes a quarter of a minute.
TEST(TableOnImage, ManyRecordsForOneFileOfTheImageTakeNoLongTime)
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

TEST(TableOnImage, TheImageIsReadAsTheStoreReadsIt)
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

TEST(TableOnImage, AFileOfTheImageIsKnownByItsContent)
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

TEST(TableOnImage, AFolderInPlaceOfAFileDoesNotLoad)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("config/user/user.ini/file"), "");
    EXPECT_EQ(SummaryOf(Record("srcSec='S' srcKey='K' dstKey='L'"), folder.Path()), "KT022 at 2");
}

TEST(TableOnImage, LinksAndDotsDoNotLeadOutOfTheImage)
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

TEST(TableOnImage, TheKeyOfTheImageDecidesWhatIsEnciphered)
{
    const std::string table = TablePath(*FindRule("KT027"), "silent");
    EXPECT_EQ(Summary(Check(table)), "nothing");
    const ScratchFolder folder;
    PutKeylessPhone(folder.Path("phone"));
    // The development key does not decipher the token, which is too long for a plain text.
    EXPECT_EQ(Summary(Check(table, folder.Path("phone"))), "KT039 at 3, KT027 at 5");
    const std::string key = folder.Path("phone/phone/factory/certs/pwcipher.key");
    WriteBytes(key, "no key");
    EXPECT_EQ(Summary(Check(table, folder.Path("phone"))), "KT027 at 3, KT027 at 5");
}

TEST(TableOnImage, AMissingKeyIsFoundOnceWhereSomethingIsEnciphered)
{
    struct Row {
        const char* attributes; // of the record at line 2
        const char* factoryLock;
        const char* list;
        const char* found;
    };
    const char* const kListed = "<e file='/config/user/user.ini' section='S' key='K'/>";
    const char* const kInactive = "<e file='/config/user/user.ini' section='S' key='K' active='0'/>";
    const Row rows[] = {
        {"srcSec='S' srcKey='K' srcEncrypt='1'", "0", kListed, "KT039 at 2"},
        {"srcSec='S' srcKey='K' srcEncrypt='1'", "1", kListed, "KT039 at 2"}, // once
        {"srcSec='S' srcKey='A' dstKey='B'", "1", kListed, "KT039 at 1"},     // the password pass
        {"srcSec='S' srcKey='A' dstKey='B'", "0", kListed, "nothing"},
        {"srcSec='S' srcKey='A' dstKey='B'", "", kListed, "nothing"},
        {"srcSec='S' srcKey='A' dstKey='B'", "1", kInactive, "nothing"},
        {"srcSec='S' srcKey='A' dstKey='B' dstEncrypt='no'", "0", kListed, "nothing"},
        {"srcKey='K' srcEncrypt='1' dstSec='S'", "0", kListed, "KT005 at 2"}, // an empty value
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.attributes) + " " + row.factoryLock + " " + row.list);
        const ScratchFolder folder;
        WriteBytes(folder.Path("config/user/user.ini"), "[S]\nK=\nA=1\nB=2\n");
        WriteBytes(folder.Path("phone/factory/user/user.ini"),
                   "[PhoneSetting]\nEnLock=" + std::string(row.factoryLock) + "\n");
        WriteBytes(folder.Path("phone/resource/encryptconfig.xml"), "<l>" + std::string(row.list) + "</l>");
        EXPECT_EQ(SummaryOf(Record(row.attributes), folder.Path()), row.found);
        WriteBytes(folder.Path("phone/factory/certs/pwcipher.key"), std::string(128, '5'));
        EXPECT_EQ(SummaryOf(Record(row.attributes), folder.Path()).find("KT039"), std::string::npos);
    }
}

TEST(TableOnImage, AMissingKeyCanBeSuppressed)
{
    const std::string record = "<r srcFile='/config/user/user.ini' srcSec='Secret' srcKey='strOld' srcEncrypt='1'/>\n";
    const std::string comment = "<!-- kestrune-table-check: ignore KT039 (these backups leave the key out) -->\n";
    const ScratchFolder folder;
    PutKeylessPhone(folder.Path("phone"));
    EXPECT_EQ(SummaryOf("<t>\n" + record + record + "</t>", folder.Path("phone")), "KT039 at 2");
    EXPECT_EQ(SummaryOf("<t>\n" + comment + record + record + "</t>", folder.Path("phone")), "nothing");
    EXPECT_EQ(SummaryOf("<t>\n" + comment + record + record + "</t>", TestPhone()), "nothing");
}

TEST(TableOnImage, WithoutTheImageThatWasAskedForNothingIsChecked)
{
    const std::string table = TablePath(*FindRule("KT005"), "fires");
    EXPECT_THROW(Check(table, SourcePath("none")), ToolError);
    EXPECT_THROW(Check(table, table), ToolError);
}

TEST(TableOnImage, TheImageIsNeverChanged)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("config/user/user.ini"), "[S]\nK=1\n");
    std::filesystem::permissions(folder.Path("config/user/user.ini"), std::filesystem::perms::owner_read);
    EXPECT_EQ(SummaryOf(Record("srcSec='S' srcKey='K' dstKey='L'"), folder.Path()), "KT028 at 2");
    EXPECT_EQ(ReadBytes(folder.Path("config/user/user.ini")), "[S]\nK=1\n");
    EXPECT_EQ(std::distance(std::filesystem::recursive_directory_iterator(folder.Path()), {}), 3);
}
