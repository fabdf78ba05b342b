// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The translation-table pass: whole runs of mode "dev" on a phone without certificates and with the XML translations
// switched off, and without a key file, so with the development key.

#include "translateConfigTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tinyxml.h>

#include "bundledPlatform.h"
#include "operationResult.h"
#include "phoneImage.h"
#include "xmlText.h"

namespace
{

constexpr char kTable[] = "/phone/resource/kestrune.xml";
constexpr char kA[] = "/config/a.ini";
constexpr char kB[] = "/config/b.ini";

const std::string kHello = Enciphered("hello, phone", "NxCtIZlb8N+vWevKAOqtDvzgV0IboWX12AuHSQ");
// 103 times "x", the longest text that can be enciphered.
constexpr char kLongToken[] =
    "q3CVjm9u+cSPKkl9psxtiBqsYliH3bjctUkRauPre4vBxdNajVCpttwwM1byv8qaipz7srLb1c+l9NhIYinx2DT3TRO7"
    "HNPeWC10UXzGmsbKQNujIMwVfNiIEMLEvXZXugGjaeMtWRxPgU1PtucqyEXkJj1Rglk";

using Lines = std::vector<std::string>;

/// A phone on which mode "dev" has nothing to do except the table pass.
class TablePhone : public PhoneImage
{
public:
    explicit TablePhone(const std::string& records, const std::string& lock = "EnLock=0\n")
    {
        Put(kUserIni, "[PhoneSetting]\n" + lock + "[Feature]\nRingbackTimeout=90\n");
        Put("/config/version.ini", "[SyncConfig]\nbEnableFromOld=0\n");
        Put(kTable, "<table>" + records + "</table>");
    }
};

/// A record with this source in a.ini.
std::string Record(const std::string& key, const std::string& more = "")
{
    return "<record srcFile='/config/a.ini' srcSec='S' srcKey='" + key + "' " + more + "/>";
}

/// The lines of a record whose value is copied unchanged to a.ini.
void AddKept(Lines& lines, const std::string& key, const std::string& value)
{
    lines.insert(lines.end(), {"src value:" + value, "lpOutPassword=, -1",
                               "Translate dst: /config/a.ini S " + key + " value:" + value + " bThisKeyEncrypt:0"});
}

} // namespace

TEST(TranslateConfigTable, WithoutATableOnlyALineIsPrinted)
{
    TablePhone phone("");
    phone.Remove(kTable);
    phone.Run("dev");
    EXPECT_EQ(phone.Output(), Lines{"The file [/phone/resource/kestrune.xml] not exist !"});
    EXPECT_THAT(phone.Reports(), testing::IsEmpty());
    phone.ExpectNothingElseChanged();
}

TEST(TranslateConfigTable, ATableWithoutRecordsIsReported)
{
    for (const char* table :
         {"<table/>", "<table></table>", "<?xml version='1.0'?><!-- c --><t>text<!-- <r/> --></t>"}) {
        SCOPED_TRACE(table);
        TablePhone phone("", "EnLock=1\n");
        phone.Put(kTable, table);
        phone.Run("dev");
        EXPECT_EQ(phone.Output(), Lines{"bEncrypt=1"});
        EXPECT_EQ(phone.Reports(), Lines{"app_log 60/4: No config translate record!"});
        phone.ExpectNothingElseChanged();
    }
}

TEST(TranslateConfigTable, ATableThatDoesNotLoadCountsAsOneWithoutRecords)
{
    const std::string record = Record("A", "dstKey='B'");
    const std::string tables[] = {"",
                                  "no XML",
                                  "<!-- only a comment -->",
                                  "<t>" + record,
                                  "<t>" + record + "<record",
                                  "<t>" + record + "</u>",
                                  "<t>" + record + "<record srcFile='/config/a.ini /></t>",
                                  "<t>" + record + Repeat("<a>", 200) + Repeat("</a>", 200) + "</t>"};
    for (const std::string& table : tables) {
        SCOPED_TRACE(table);
        TablePhone phone("");
        phone.Put(kTable, table);
        phone.Put(kA, "[S]\nA=1\n");
        phone.Run("dev");
        EXPECT_EQ(phone.Output(), Lines{"bEncrypt=0"});
        EXPECT_EQ(phone.Reports(), Lines{"app_log 60/4: No config translate record!"});
        phone.ExpectNothingElseChanged();
    }
    TablePhone phone("");
    phone.Remove(kTable);
    phone.PutFolder(kTable);
    phone.Run("dev");
    EXPECT_EQ(phone.Output(), Lines{"bEncrypt=0"});
    EXPECT_EQ(phone.Reports(), Lines{"app_log 60/4: No config translate record!"});
    phone.ExpectNothingElseChanged();
}

TEST(TranslateConfigTable, AnyLockButZeroLocks)
{
    struct Row {
        const char* lock;
        const char* printed;
    };
    const Row rows[] = {{"EnLock=1\n", "bEncrypt=1"},  {"EnLock=2\n", "bEncrypt=1"}, {"EnLock=-1\n", "bEncrypt=1"},
                        {"EnLock=0\n", "bEncrypt=0"},  {"", "bEncrypt=0"},           {"EnLock=\n", "bEncrypt=0"},
                        {"EnLock=on\n", "bEncrypt=0"}, {"EnLock=1x\n", "bEncrypt=1"}};
    for (const Row& row : rows) {
        TablePhone phone("", row.lock);
        phone.Run("dev");
        EXPECT_EQ(phone.Output(), Lines{row.printed}) << row.lock;
    }
}

TEST(TranslateConfigTable, WithoutTheUsersFileValuesArePlain)
{
    TablePhone phone(Record("A", "srcEncrypt='true'"));
    phone.Remove(kUserIni);
    phone.PutFolder(kUserIni);
    phone.Put(kA, std::string("[S]\nA=") + kHello + "\n");
    phone.Run("dev");
    EXPECT_EQ(phone.Output(), (Lines{"bEncrypt=0", std::string("src value:") + kHello, "lpOutPassword=hello, phone, 0",
                                     "Translate dst: /config/a.ini S A value:hello, phone bThisKeyEncrypt:1"}));
    phone.Expect(kA, "[S]\nA=hello, phone\n");
    phone.ExpectNothingElseChanged();
}

TEST(TranslateConfigTable, AValueMovesAndItsOldKeyStays)
{
    TablePhone phone(Record("A", "dstFile='/config/b.ini' dstSec='T' dstKey='New &amp; old'") +
                     Record("A", "dstKey='C'"));
    phone.Put(kA, "[S]\nA = some value \n");
    phone.Put(kB, "; nothing yet\n");
    phone.Run("dev");
    EXPECT_EQ(phone.Output(), (Lines{"bEncrypt=0", "src value:some value ", "lpOutPassword=, -1",
                                     "Translate dst: /config/b.ini T New & old value:some value  bThisKeyEncrypt:0",
                                     "src value:some value ", "lpOutPassword=, -1",
                                     "Translate dst: /config/a.ini S C value:some value  bThisKeyEncrypt:0"}));
    EXPECT_THAT(phone.Reports(), testing::IsEmpty());
    phone.Expect(kA, "[S]\nA = some value \nC = some value \n");
    phone.Expect(kB, "; nothing yet\n\n[T]\nNew & old=some value \n");
    phone.ExpectNothingElseChanged();
    phone.Run("dev");
    phone.ExpectNothingElseChanged();
}

TEST(TranslateConfigTable, EveryChildOfTheRootIsARecordAndNothingElseIs)
{
    TablePhone phone("");
    phone.Put(kTable,
              "<?xml version='1.0' encoding='UTF-8'?>\r\n<!-- " + Record("A", "dstKey='No1'") +
                  " -->\r\n<any.root x='1'>" + "text<!-- " + Record("A", "dstKey='No2'") +
                  " -->\r\n<x srcFile='/config/a.ini' srcSec='S' srcKey='A' dstKey='B'>" + Record("A", "dstKey='No3'") +
                  "</x><y:z srcFile='/config/a.ini' srcSec='S' srcKey='B' dstKey='C' other='1'></y:z></any.root>");
    phone.Put(kA, "[S]\nA=1\n");
    phone.Run("dev");
    phone.Expect(kA, "[S]\nA=1\nB=1\nC=1\n");
    phone.ExpectNothingElseChanged();
    Lines expected = {"bEncrypt=0"};
    AddKept(expected, "B", "1");
    AddKept(expected, "C", "1");
    EXPECT_EQ(phone.Output(), expected);
}

TEST(TranslateConfigTable, ASecretInPlaceIsBroughtIntoTheFormOfTheLock)
{
    struct Row {
        const char* lock;
        const char* flags;
        std::string before;
        std::string after;
        int printedFlag;
    };
    const Row rows[] = {
        {"EnLock=1\n", "srcEncrypt='true'", "hello, phone", kHello, 1},
        {"EnLock=1\n", "srcEncrypt='true'", kHello, kHello, 1},
        {"EnLock=1\n", "dstEncrypt='true'", "hello, phone", kHello, 1},
        {"EnLock=1\n", "dstEncrypt='true' srcEncrypt='false'", "hello, phone", kHello, 1},
        {"EnLock=1\n", "dstEncrypt='false' srcEncrypt='true'", kHello, "hello, phone", 0},
        {"EnLock=1\n", "dstEncrypt='maybe' srcEncrypt='true'", "hello, phone", kHello, 1},
        {"EnLock=1\n", "dstEncrypt='maybe' srcEncrypt='maybe'", kHello, "hello, phone", 0},
        {"EnLock=1\n", "", kHello, "hello, phone", 0},
        {"EnLock=1\n", "", "hello, phone", "hello, phone", 0},
        {"EnLock=0\n", "srcEncrypt='true'", kHello, "hello, phone", 1},
        {"EnLock=0\n", "dstEncrypt='true'", "hello, phone", "hello, phone", 1},
        {"EnLock=0\n", "", kHello, "hello, phone", 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.lock) + row.flags + " " + row.before);
        TablePhone phone(Record("A", row.flags), row.lock);
        phone.Put(kA, std::string("[S]\nA=") + row.before + "\n");
        phone.Run("dev");
        const Lines output = phone.Output();
        ASSERT_EQ(output.size(), 4u);
        EXPECT_EQ(output[1], std::string("src value:") + row.before);
        EXPECT_EQ(output[3], std::string("Translate dst: /config/a.ini S A value:") + row.after +
                                 " bThisKeyEncrypt:" + std::to_string(row.printedFlag));
        phone.Expect(kA, std::string("[S]\nA=") + row.after + "\n");
        phone.ExpectNothingElseChanged();
        phone.Run("dev");
        phone.ExpectNothingElseChanged();
    }
}

TEST(TranslateConfigTable, ASourceThatIsMissingGivesAnEmptyValue)
{
    TablePhone phone("<r srcFile='/config/missing.ini' srcSec='S' srcKey='A' dstFile='/config/a.ini'/>" +
                     Record("None") +
                     "<r srcFile='/config/a.ini' srcSec='None' srcKey='A' dstKey='C' srcEncrypt='1'/>");
    phone.Put(kA, "[S]\nA=1\n");
    phone.Run("dev");
    EXPECT_EQ(
        phone.Output(),
        (Lines{"bEncrypt=0", "Can's load user's inifile [/config/missing.ini]!", "src value:", "lpOutPassword=, 0",
               "Translate dst: /config/a.ini S A value: bThisKeyEncrypt:0", "src value:", "lpOutPassword=, 0",
               "Translate dst: /config/a.ini S None value: bThisKeyEncrypt:0", "src value:", "lpOutPassword=, 0",
               "Translate dst: /config/a.ini None C value: bThisKeyEncrypt:1"}));
    phone.Expect(kA, "[S]\nA=\nNone=\n\n[None]\nC=\n");
    phone.ExpectNothingElseChanged();
}

TEST(TranslateConfigTable, ARecordWithoutASourceAttributeWritesAnEmptyValueUnread)
{
    const char* records[] = {
        "<r srcSec='S' srcKey='A' dstFile='/config/a.ini'/>",
        "<r srcFile='/config/a.ini' srcKey='A' dstSec='S'/>",
        "<r srcFile='/config/a.ini' srcSec='S' dstKey='A'/>",
        "<r dstFile='/config/a.ini' dstSec='S' dstKey='A' dstEncrypt='true'/>",
    };
    for (const char* record : records) {
        SCOPED_TRACE(record);
        TablePhone phone(record, "EnLock=1\n");
        phone.Put(kA, "[S]\nA=1\n");
        phone.Run("dev");
        const bool isFlagged = std::string(record).find("dstEncrypt") != std::string::npos;
        EXPECT_EQ(phone.Output(),
                  (Lines{"bEncrypt=1", std::string("Translate dst: /config/a.ini S A value: bThisKeyEncrypt:") +
                                           (isFlagged ? "1" : "0")}));
        phone.Expect(kA, "[S]\nA=\n");
        phone.ExpectNothingElseChanged();
    }
}

TEST(TranslateConfigTable, ADestinationThatDoesNotLoadEndsThePass)
{
    struct Row {
        const char* record;
        const char* file;  // as printed
        const char* value; // as printed
    };
    const Row rows[] = {
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='A' dstFile='/config/missing.ini'/>", "/config/missing.ini",
         "1"},
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='A' dstFile='/config/user'/>", "/config/user", "1"},
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='A' dstFile=''/>", "", "1"},
        {"<r srcSec='S' srcKey='A'/>", "", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.record);
        TablePhone phone(Record("A", "dstKey='Before'") + row.record + Record("A", "dstKey='Behind'"));
        phone.Put(kA, "[S]\nA=1\n");
        phone.Run("dev");
        Lines expected = {"bEncrypt=0"};
        AddKept(expected, "Before", "1");
        if (*row.value != '\0')
            expected.insert(expected.end(), {"src value:1", "lpOutPassword=, -1"});
        expected.push_back(std::string("Translate dst: ") + row.file + " S A value:" + row.value +
                           " bThisKeyEncrypt:0");
        expected.push_back("Can's load user's inifile!");
        EXPECT_EQ(phone.Output(), expected);
        EXPECT_THAT(phone.Reports(), testing::IsEmpty());
        phone.Expect(kA, "[S]\nA=1\nBefore=1\n");
        phone.ExpectNothingElseChanged();
    }
}

TEST(TranslateConfigTable, WhatTheDestinationCannotHoldIsPassedOver)
{
    TablePhone phone(Record("Zero", "dstFile='/config/b.ini'") + Record("Return", "dstFile='/config/b.ini'") +
                     Record("Good", "dstFile='/config/b.ini' dstSec='a]b'") +
                     Record("Good", "dstFile='/config/b.ini' dstKey='a=b'") +
                     Record("Good", "dstFile='/config/b.ini' dstKey=''") + Record("Good", "dstFile='/config/b.ini'"));
    phone.Put(kA, std::string("[S]\nZero=a\0b\nReturn=a\r\r\nGood=1\n", 32)); // the last CR belongs to the line end
    phone.Put(kB, "[S]\nZero=old\nReturn=old\n");
    phone.Run("dev");
    phone.Expect(kB, "[S]\nZero=old\nReturn=old\nGood=1\n");
    phone.ExpectNothingElseChanged();
}

TEST(TranslateConfigTable, AValueWithACarriageReturnInsideIsMoved)
{
    TablePhone phone(Record("A", "dstFile='/config/b.ini'"));
    phone.Put(kA, "[S]\nA=a\rb\n");
    phone.Put(kB, "[S]\nA=old\n");
    phone.Run("dev");
    phone.Expect(kB, "[S]\nA=a\rb\n");
    phone.ExpectNothingElseChanged();
}

TEST(TranslateConfigTable, ADestinationThatCannotBeSavedIsPassedOver)
{
    TablePhone phone(Record("A", "dstFile='/config/b.ini'") + Record("A", "dstKey='B'"));
    phone.Put(kA, "[S]\nA=1\n");
    phone.Put(kB, "");
    phone.Put("/config/b.ini.kestrune-new/in the way", ""); // a folder in place of the new file
    phone.RunWith({"dev"});
    phone.Expect(kA, "[S]\nA=1\nB=1\n");
    phone.ExpectNothingElseChanged();
}

TEST(TranslateConfigTable, LongAndEightBitValuesStayPlainUntilTheBufferIsTooSmall)
{
    if (!kHasBundledPlatform)
        GTEST_SKIP() << "rests on the texts of the bundled cipher";
    struct Row {
        std::string before;
        std::string locked; // in a destination that is kept enciphered
    };
    const Row rows[] = {
        {std::string(103, 'x'), kLongToken},
        {std::string(104, 'x'), std::string(104, 'x')},
        {std::string(159, 'x'), std::string(159, 'x')},
        {std::string(160, 'x'), ""},
        {std::string(2000, 'x'), ""},
        {"gr\xC3\xBC\xC3\x9F", "gr\xC3\xBC\xC3\x9F"},
        {"\xFF", "\xFF"},
        {"\"quoted; # text\"", "ySlJ0giHtoK6mliImNyZ/kXVD+2kuhXY7P6o5htCWs8"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.before);
        for (const bool isLocked : {true, false}) {
            TablePhone phone(Record("A", "dstKey='B' dstEncrypt='1'") + Record("A", "dstKey='C'"),
                             isLocked ? "EnLock=1\n" : "EnLock=0\n");
            phone.Put(kA, "[S]\nA=" + row.before + "\n");
            phone.Run("dev");
            phone.Expect(kA, "[S]\nA=" + row.before + "\nB=" + (isLocked ? row.locked : row.before) +
                                 "\nC=" + row.before + "\n");
            phone.ExpectNothingElseChanged();
        }
    }
}

TEST(TranslateConfigTable, ValuesAreNeverAFormat)
{
    TablePhone phone(Record("A", "dstKey='%s%n'"));
    phone.Put(kA, "[S]\nA=%s%n%d\n");
    phone.Run("dev");
    Lines expected = {"bEncrypt=0"};
    AddKept(expected, "%s%n", "%s%n%d");
    EXPECT_EQ(phone.Output(), expected);
    phone.Expect(kA, "[S]\nA=%s%n%d\n%s%n=%s%n%d\n");
}

TEST(TranslateConfigTable, TheLaterOfTwoRecordsWithOneDestinationWins)
{
    TablePhone phone(Record("A", "dstKey='C'") + Record("B", "dstKey='C'"));
    phone.Put(kA, "[S]\nA=1\nB=2\n");
    phone.Run("dev");
    phone.Expect(kA, "[S]\nA=1\nB=2\nC=2\n");
    phone.ExpectNothingElseChanged();
}

TEST(TranslateConfigTable, ARecordSeesWhatTheRecordsBeforeItSaved)
{
    TablePhone phone(Record("A", "dstKey='B'") + Record("B", "dstKey='C'") + Record("C", "dstFile='/config/b.ini'"));
    phone.Put(kA, "[S]\nA=1\n");
    phone.Put(kB, "");
    phone.Run("dev");
    phone.Expect(kA, "[S]\nA=1\nB=1\nC=1\n");
    phone.Expect(kB, "[S]\nC=1\n");
    phone.ExpectNothingElseChanged();
    phone.Run("dev");
    phone.ExpectNothingElseChanged();
}

TEST(TranslateConfigTable, RecordsInACircleTurnOnceARun)
{
    TablePhone phone(Record("A", "dstKey='C'") + Record("B", "dstKey='A'") + Record("C", "dstKey='B'"));
    phone.Put(kA, "[S]\nA=1\nB=2\nC=\n");
    phone.Run("dev");
    phone.Expect(kA, "[S]\nA=2\nB=1\nC=1\n");
    phone.Run("dev");
    phone.Expect(kA, "[S]\nA=1\nB=2\nC=2\n");
}

TEST(TranslateConfigTable, TheLockIsReadOnce)
{
    TablePhone phone(
        "<r srcFile='/config/a.ini' srcSec='S' srcKey='Lock' dstFile='/config/user/user.ini' dstSec='PhoneSetting'"
        " dstKey='EnLock'/>" +
        Record("A", "srcEncrypt='1'"));
    phone.Put(kA, "[S]\nLock=1\nA=hello, phone\n");
    phone.Run("dev");
    phone.Expect(kUserIni, "[PhoneSetting]\nEnLock=1\n[Feature]\nRingbackTimeout=90\n");
    phone.ExpectNothingElseChanged();
    phone.Run("dev");
    phone.Expect(kA, std::string("[S]\nLock=1\nA=") + kHello + "\n");
    phone.ExpectNothingElseChanged();
}

TEST(TranslateConfigTable, TheResultIsOneWhenEveryRecordWasProcessed)
{
    const std::string toB = Record("A", "dstFile='/config/b.ini'");
    const std::string toMissing = Record("A", "dstFile='/config/missing.ini'");
    struct Row {
        const char* what;
        std::string table;
        int result;
    };
    const Row rows[] = {
        {"one record", "<t>" + toB + "</t>", 1},
        {"two records", "<t>" + toB + Record("A", "dstKey='B'") + "</t>", 1},
        {"a source that is missing",
         "<t><r srcFile='/config/missing.ini' srcSec='S' srcKey='A' dstFile='/config/b.ini'/></t>", 1},
        {"a record without a source", "<t><r dstFile='/config/b.ini' dstSec='S' dstKey='A'/></t>", 1},
        {"a key that no file can hold", "<t>" + Record("A", "dstKey='a=b'") + "</t>", 1},
        {"a destination that cannot be saved", "<t>" + Record("A", "dstFile='/config/c.ini'") + toB + "</t>", 1},
        {"the only destination does not load", "<t>" + toMissing + "</t>", 0},
        {"the first destination does not load", "<t>" + toMissing + toB + "</t>", 0},
        {"the last destination does not load", "<t>" + toB + toMissing + "</t>", 0},
        {"a record without any file", "<t>" + toB + "<r/></t>", 0},
        {"no record", "<t/>", 0},
        {"no record but a text and a comment", "<t>a<!-- b --></t>", 0},
        {"no root", "<!-- a -->", 0},
        {"not well-formed", "<t>" + toB, 0},
        {"empty", "", 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        TablePhone phone("");
        phone.Put(kTable, row.table);
        phone.Put(kA, "[S]\nA=1\n");
        phone.Put(kB, "[S]\nA=2\n");
        phone.Put("/config/c.ini", "");
        phone.Put("/config/c.ini.kestrune-new/in the way", ""); // a folder in place of the new file
        // The document is the only object for which the pass uses the tracking allocation.
        EXPECT_EQ(ResultOf(RunForResult(phone, "TranslateConfigTable")),
                  "result " + std::to_string(row.result) + "\nnew ../../../app/kestrune/kestrune\n");
    }
}

TEST(TranslateConfigTable, WithoutATableTheResultIsZeroAndNoDocumentIsMade)
{
    TablePhone phone("");
    phone.Remove(kTable);
    EXPECT_EQ(ResultOf(RunForResult(phone, "TranslateConfigTable")), "result 0\n");

    TablePhone folder("");
    folder.Remove(kTable);
    folder.PutFolder(kTable); // it exists
    EXPECT_EQ(ResultOf(RunForResult(folder, "TranslateConfigTable")), "result 0\nnew ../../../app/kestrune/kestrune\n");
}

TEST(TranslateConfigTableGetDstInfo, WhatIsAbsentComesFromTheSource)
{
    struct Row {
        const char* record;
        const char* file;
        const char* section;
        const char* key;
    };
    const Row rows[] = {
        {"<r srcFile='f' srcSec='s' srcKey='k'/>", "f", "s", "k"},
        {"<r srcFile='f' srcSec='s' srcKey='k' dstFile='F'/>", "F", "s", "k"},
        {"<r srcFile='f' srcSec='s' srcKey='k' dstSec='S'/>", "f", "S", "k"},
        {"<r srcFile='f' srcSec='s' srcKey='k' dstKey='K'/>", "f", "s", "K"},
        {"<r srcFile='f' srcSec='s' srcKey='k' dstFile='F' dstSec='S' dstKey='K'/>", "F", "S", "K"},
        {"<r dstFile='F' dstSec='S' dstKey='K'/>", "F", "S", "K"},
        {"<r srcFile='f' srcSec='s' srcKey='k' dstFile='' dstSec='' dstKey=''/>", "", "", ""},
        {"<r srcFile='' srcSec='' srcKey=''/>", "", "", ""},
        {"<r/>", "as before", "as before", "as before"},
        {"<r srcSec='s' dstKey='K'/>", "as before", "s", "K"},
        {"<r SrcFile='f' srcsec='s' dst-Key='K'/>", "as before", "as before", "as before"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.record);
        TiXmlDocument document;
        document.Parse(row.record);
        std::string file = "as before";
        std::string section = "as before";
        std::string key = "as before";
        bool bThisKeyEncrypt = false;
        GetDstInfo(*document.RootElement(), file, section, key, bThisKeyEncrypt);
        EXPECT_EQ(file, row.file);
        EXPECT_EQ(section, row.section);
        EXPECT_EQ(key, row.key);
        EXPECT_FALSE(bThisKeyEncrypt);
    }
}

TEST(TranslateConfigTableGetDstInfo, TheFlagIsTheDestinationsElseTheSources)
{
    struct Row {
        const char* flags;
        bool expected;
    };
    const Row rows[] = {
        {"", false},
        {"dstEncrypt='true'", true},
        {"dstEncrypt='True'", true},
        {"dstEncrypt='yes'", true},
        {"dstEncrypt='1'", true},
        {"srcEncrypt='YES'", true},
        {"srcEncrypt='1'", true},
        {"srcEncrypt='no'", false},
        {"srcEncrypt='maybe'", false},
        {"srcEncrypt='2'", false},
        {"srcEncrypt='on'", false},
        {"dstEncrypt='no' srcEncrypt='yes'", false},
        {"dstEncrypt='false' srcEncrypt='true'", false},
        {"dstEncrypt='0' srcEncrypt='1'", false},
        {"dstEncrypt='1' srcEncrypt='0'", true},
        {"dstEncrypt='maybe' srcEncrypt='true'", true},
        {"dstEncrypt='-1' srcEncrypt='yes'", true},
        {"dstEncrypt='maybe' srcEncrypt='false'", false},
        {"dstEncrypt='maybe' srcEncrypt='maybe'", false},
        {"dstencrypt='true' SrcEncrypt='true'", false},
    };
    for (const Row& row : rows) {
        TiXmlDocument document;
        document.Parse(("<r " + std::string(row.flags) + "/>").c_str());
        std::string file;
        std::string section;
        std::string key;
        bool bThisKeyEncrypt = false;
        GetDstInfo(*document.RootElement(), file, section, key, bThisKeyEncrypt);
        EXPECT_EQ(bThisKeyEncrypt, row.expected) << row.flags;
    }
}

TEST(TranslateConfigTable, AnEmptyFlagIsNoBooleanAndFallsBack)
{
    // The XML library ends the program when it is asked for a boolean and the attribute is empty.
    for (const char* flags : {"dstEncrypt='' srcEncrypt='true'", "dstEncrypt='true' srcEncrypt=''"}) {
        SCOPED_TRACE(flags);
        TablePhone phone(Record("A", flags), "EnLock=1\n");
        phone.Put(kA, "[S]\nA=hello, phone\n");
        phone.Run("dev");
        phone.Expect(kA, std::string("[S]\nA=") + kHello + "\n");
    }
    TablePhone phone(Record("A", "srcEncrypt=''"), "EnLock=1\n");
    phone.Put(kA, "[S]\nA=hello, phone\n");
    phone.Run("dev");
    phone.ExpectNothingElseChanged();
}

TEST(TranslateConfigTableReadIniText, AKeyItsDefaultOrNothing)
{
    const ScratchFolder folder;
    const std::string file = folder.Path("a.ini");
    WriteBytes(file, "[S]\nA=value\nEmpty=\n");
    testing::internal::CaptureStdout();
    EXPECT_EQ(ReadIniText(file.c_str(), "S", "A", "default"), "value");
    EXPECT_EQ(ReadIniText(file.c_str(), "S", "Empty", "default"), "");
    EXPECT_EQ(ReadIniText(file.c_str(), "S", "B", "default"), "default");
    EXPECT_EQ(ReadIniText(file.c_str(), "T", "A", "default"), "default");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");

    testing::internal::CaptureStdout();
    const std::string missing = folder.Path("%s missing.ini");
    EXPECT_EQ(ReadIniText(missing.c_str(), "S", "A", "default"), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Can's load user's inifile [" + missing + "]!\n");
}
