// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Mode "1" saves the old LED and system-log settings to the hand-over file if the two "SyncCfgByVersion" settings
// require it, and only reads the files that they come from.

#include "saveVersionInfo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "phoneImage.h"
#include "registry.h"
#include "scratchFolder.h"
#include "untouchedFiles.h"

namespace
{

constexpr char kSystem[] = "/config/system/system.ini";
constexpr char kFactory[] = "/phone/factory/user/user.ini";
constexpr char kHandOver[] = "/tmp/VersionInfo.cfg";

// The ring-back time-out is set, so that the start-up fix-ups do not change the file.
const std::string kUserText = "; by hand\n"
                              "[Feature]\nRingbackTimeout=90\n\n"
                              "[Features]\nBLFLedOffIdle=1\nBLfNotifyType = 0\nClosePowerLight=1\n"
                              "PowerLedIdle&Talk=0\nPowerLedMail=1\nnDialNowDelay=4\n\n"
                              "[Sync]\nSyncCfgByVersion=0\n";
const std::string kSystemText = "[Syslog]\neLogType=3\nstrServerName=syslog.example.com\nnLevel=5\n";
const std::string kFactoryText = "[Sync]\nSyncCfgByVersion=1\n";
const std::string kSaved = "[Features]\nBLFLedOffIdle=1\nBLfNotifyType=0\nClosePowerLight=1\nPowerLedIdle&Talk=0\n"
                           "PowerLedMail=1\n\n"
                           "[Syslog]\neLogType=3\nstrServerName=syslog.example.com\n";

void PutSources(PhoneImage& phone)
{
    phone.Put(kFactory, kFactoryText);
    phone.Put(kUserIni, kUserText);
    phone.Put(kSystem, kSystemText);
}

} // namespace

TEST(SaveVersionInfo, AllSevenKeysAreSavedAndTheSourcesAreOnlyRead)
{
    PhoneImage phone;
    PutSources(phone);
    const UntouchedFiles sources(phone, {kFactory, kUserIni, kSystem});
    phone.Run("1");
    phone.Expect(kHandOver, kSaved);
    phone.ExpectNothingElseChanged();
    sources.Check();
    EXPECT_THAT(phone.Reports(), testing::IsEmpty());
    EXPECT_THAT(phone.Output(), testing::IsEmpty());
}

TEST(SaveVersionInfo, RunsOnlyWhenTheFactorySaysOneAndTheUserNothingElseThanZero)
{
    struct Row {
        const char* factory; // null: no key
        const char* user;    // null: no key
        bool isSaved;
    };
    const Row rows[] = {
        {"1", "0", true},           {"1", nullptr, true},  {"1", "", true},     {"1", "none", true},
        {"+1", "-0", true},         {"01", "00", true},    {"1x", "0x1", true}, {"1", "1", false},
        {"1", "2", false},          {"1", "-1", false},    {"0", "0", false},   {"2", "0", false},
        {"-1", "0", false},         {nullptr, "0", false}, {"", "0", false},    {"yes", "0", false},
        {"0x1", "0", false},        {"0", "1", false},     {"2", "1", false},   {"4294967297", "0", false},
        {"1", "4294967296", false},
    };
    for (const Row& row : rows) {
        const std::string factory = row.factory == nullptr ? "" : std::string("SyncCfgByVersion=") + row.factory + "\n";
        const std::string user = row.user == nullptr ? "" : std::string("SyncCfgByVersion=") + row.user + "\n";
        SCOPED_TRACE("factory " + factory + "user " + user);
        PhoneImage phone;
        phone.Put(kFactory, "[Sync]\n" + factory);
        phone.Put(kUserIni, "[Feature]\nRingbackTimeout=90\n\n[Sync]\n" + user);
        phone.Run("1");
        if (row.isSaved)
            phone.Expect(kHandOver, "[Features]\nBLFLedOffIdle=\nBLfNotifyType=\nClosePowerLight=\nPowerLedIdle&Talk=\n"
                                    "PowerLedMail=\n\n[Syslog]\neLogType=\nstrServerName=\n");
        phone.ExpectNothingElseChanged();
    }
}

TEST(SaveVersionInfo, AnotherSectionOrSpellingOfTheConditionDoesNotCount)
{
    for (const char* factory : {"[sync]\nSyncCfgByVersion=1\n", "[Sync]\nsynccfgbyversion=1\n", "SyncCfgByVersion=1\n",
                                "[Sync]\n;SyncCfgByVersion=1\n", "[Sync]\nSyncCfgByVersion=0\nSyncCfgByVersion=1\n"}) {
        SCOPED_TRACE(factory);
        PhoneImage phone;
        PutSources(phone);
        phone.Put(kFactory, factory);
        phone.Run("1");
        phone.ExpectNothingElseChanged();
    }
}

TEST(SaveVersionInfo, WithoutTheFactoryFileNothingIsSaved)
{
    PhoneImage phone;
    PutSources(phone);
    phone.Remove(kFactory);
    phone.Run("1");
    phone.ExpectNothingElseChanged();
}

TEST(SaveVersionInfo, AnExistingHandOverFileStaysWhenTheConditionDoesNotHold)
{
    PhoneImage phone;
    PutSources(phone);
    phone.Put(kFactory, "[Sync]\nSyncCfgByVersion=0\n");
    phone.Put(kHandOver, "[Features]\nPowerLedMail=7\n");
    const UntouchedFiles files(phone, {kFactory, kUserIni, kSystem, kHandOver});
    phone.Run("1");
    phone.ExpectNothingElseChanged();
    files.Check();
}

TEST(SaveVersionInfo, AnAbsentKeyIsSavedAsAnEmptyOne)
{
    PhoneImage phone;
    PutSources(phone);
    phone.Put(kUserIni, "[Feature]\nRingbackTimeout=90\nPowerLedMail=9\n\n"
                        "[Features]\nBLFLedOffIdle=1\nBLfNotifyType=0\nClosePowerLight=\nPowerLedIdle&Talk=0\n"
                        "powerledmail=9\nBLFNotifyType=9\n");
    phone.Put(kSystem, "[syslog]\neLogType=3\n\n[Syslog]\nstrServerName=\n");
    phone.Run("1");
    phone.Expect(
        kHandOver,
        "[Features]\nBLFLedOffIdle=1\nBLfNotifyType=0\nClosePowerLight=\nPowerLedIdle&Talk=0\nPowerLedMail=\n\n"
        "[Syslog]\neLogType=\nstrServerName=\n");
    phone.ExpectNothingElseChanged();
}

TEST(SaveVersionInfo, MissingSourceFilesGiveEmptyValues)
{
    PhoneImage phone;
    phone.Put(kFactory, kFactoryText);
    phone.Put(kUserIni, "[Feature]\nRingbackTimeout=90\n");
    phone.Run("1");
    phone.Expect(kHandOver, "[Features]\nBLFLedOffIdle=\nBLfNotifyType=\nClosePowerLight=\nPowerLedIdle&Talk=\n"
                            "PowerLedMail=\n\n[Syslog]\neLogType=\nstrServerName=\n");
    phone.ExpectNothingElseChanged(); // in particular no system.ini
}

TEST(SaveVersionInfo, ValuesAreCopiedAsTextWithoutAnyConversion)
{
    PhoneImage phone;
    phone.Put(kFactory, kFactoryText);
    phone.Put(kUserIni, "[Feature]\r\nRingbackTimeout=90\r\n\r\n"
                        "[Features]\r\nBLFLedOffIdle=0x1 ; two\r\nBLfNotifyType=\"1\"\r\nClosePowerLight=%d%s\r\n"
                        "PowerLedIdle&Talk=a=b\xff\xc3\xa4 \t\r\nPowerLedMail=   99999999999\r\n");
    phone.Put(kSystem, "[Syslog]\neLogType=-1\nstrServerName=?[x]");
    phone.Run("1");
    phone.Expect(kHandOver, "[Features]\nBLFLedOffIdle=0x1 ; two\nBLfNotifyType=\"1\"\nClosePowerLight=%d%s\n"
                            "PowerLedIdle&Talk=a=b\xff\xc3\xa4 \t\nPowerLedMail=99999999999\n\n"
                            "[Syslog]\neLogType=-1\nstrServerName=?[x]\n");
    phone.ExpectNothingElseChanged();
}

TEST(SaveVersionInfo, ASecondRunChangesNothing)
{
    PhoneImage phone;
    PutSources(phone);
    phone.Run("1");
    phone.Run("1");
    phone.ExpectNothingElseChanged();
    phone.Expect(kHandOver, kSaved);
}

TEST(SaveVersionInfo, AnOlderHandOverFileKeepsItsOtherKeysAndTakesTheNewValues)
{
    PhoneImage phone;
    PutSources(phone);
    phone.Put(kHandOver, "# older\n[Other]\na=1\n\n[Features]\nkeep=yes\nPowerLedMail=9\nBLFLedOffIdle=\n\n"
                         "[Syslog]\nstrServerName=old.example.com\n");
    phone.Run("1");
    // Existing keys are changed in place; missing keys are added after the section's last key.
    phone.Expect(kHandOver, "# older\n[Other]\na=1\n\n[Features]\nkeep=yes\nPowerLedMail=1\nBLFLedOffIdle=1\n"
                            "BLfNotifyType=0\nClosePowerLight=1\nPowerLedIdle&Talk=0\n\n"
                            "[Syslog]\nstrServerName=syslog.example.com\neLogType=3\n");
    phone.ExpectNothingElseChanged();
}

TEST(SaveVersionInfo, AValueThatWasRemovedIsEmptiedInAnOlderHandOverFile)
{
    PhoneImage phone;
    PutSources(phone);
    phone.Run("1");
    phone.Put(kSystem, "[Syslog]\neLogType=2\n");
    phone.Run("1");
    std::string expected = kSaved;
    expected.replace(expected.find("eLogType=3"), 10, "eLogType=2");
    expected.resize(expected.find("syslog.example.com"));
    phone.Expect(kHandOver, expected + "\n");
    phone.ExpectNothingElseChanged();
}

TEST(SaveVersionInfo, AUserFileThatCannotBeReadKeepsTheLogSettingsFromNothing)
{
    PhoneImage phone;
    PutSources(phone);
    phone.Remove(kUserIni);
    phone.PutFolder(kUserIni);
    phone.Run("1");
    phone.Expect(kHandOver, "[Syslog]\neLogType=3\nstrServerName=syslog.example.com\n");
    phone.ExpectNothingElseChanged();
}

TEST(SaveVersionInfo, ASystemFileThatCannotBeReadKeepsTheLedSettingsFromNothing)
{
    PhoneImage phone;
    PutSources(phone);
    phone.Remove(kSystem);
    phone.PutFolder(kSystem);
    phone.Run("1");
    phone.Expect(kHandOver, kSaved.substr(0, kSaved.find("\n[Syslog]")));
    phone.ExpectNothingElseChanged();
}

TEST(SaveVersionInfo, AHandOverFileThatCannotBeWrittenHarmsNothing)
{
    PhoneImage phone;
    PutSources(phone);
    phone.AddSandboxOptions({"--ro-bind", phone.HostPath("/tmp"), "/tmp"});
    phone.Run("1");
    phone.ExpectNothingElseChanged();
}

TEST(SaveVersionInfoCopyRegistryText, ANullHandleOrKeyCopiesNothing)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("source"), "[A]\nkey=text\n");
    const std::string targetPath = folder.Path("target");
    _HREGISTRY_* source = registryOpen(folder.Path("source").c_str(), "A");
    _HREGISTRY_* target = registryOpen(targetPath.c_str(), "B");
    ASSERT_NE(source, nullptr);
    ASSERT_NE(target, nullptr);
    CopyRegistryText(/*source=*/nullptr, target, "key");
    CopyRegistryText(source, /*target=*/nullptr, "key");
    CopyRegistryText(source, target, /*key=*/nullptr);
    EXPECT_EQ(ETL_SubClass::registryGetString(target, "key", "none"), "none");

    // The same handles copy with a key, so the calls above failed because of the missing argument.
    CopyRegistryText(source, target, "key");
    CopyRegistryText(source, target, "absent");
    registryFlush(target);
    EXPECT_EQ(ReadBytes(targetPath), "[B]\nkey=text\nabsent=\n");
    EXPECT_EQ(ReadBytes(folder.Path("source")), "[A]\nkey=text\n");
}
