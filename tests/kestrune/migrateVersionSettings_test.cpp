// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Mode "2" converts what mode "1" saved in the hand-over file into the keys that the firmware reads.

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <vector>

#include "phoneImage.h"
#include "untouchedFiles.h"

namespace
{

constexpr char kSystem[] = "/config/system/system.ini";
constexpr char kHandOver[] = "/tmp/VersionInfo.cfg";

// A user.ini in which the start-up fix-ups and the backlight step change nothing: 0 minutes stay 0 seconds.
const std::string kQuietUser = "[Feature]\nRingbackTimeout=90\n\n[Backlight]\nnBacklightTime=0\n";

const std::string kPowerLedOff = "\n[PowerLed]\nPowerLed_Common=0\nPowerLed_Ring=1\nPowerLed_Mail=0\nPowerLed_Mute=0\n"
                                 "PowerLed_HoldHeld=0\nPowerLed_TalkDial=0\n";

/// A key line; none for null.
std::string Line(const char* key, const char* value)
{
    return value == nullptr ? "" : std::string(key) + "=" + value + "\n";
}

struct BLFLedRow {
    const char* offIdle; // null: no key
    const char* notify;  // null: no key
    const char* mode;    // null: untouched
};

void ExpectBLFLedModes(const std::vector<BLFLedRow>& rows)
{
    for (const BLFLedRow& row : rows) {
        const std::string saved =
            "[Features]\n" + Line("BLFLedOffIdle", row.offIdle) + Line("BLfNotifyType", row.notify);
        SCOPED_TRACE(saved);
        for (const std::string before : {"", "\n[BLFLed]\nBLFLedMode=8\n"}) {
            PhoneImage phone;
            phone.Put(kHandOver, saved);
            phone.Put(kUserIni, kQuietUser + before);
            const UntouchedFiles source(phone, {kHandOver});
            phone.Run("2");
            if (row.mode != nullptr)
                phone.Expect(kUserIni, kQuietUser + "\n[BLFLed]\nBLFLedMode=" + row.mode + "\n");
            phone.ExpectNothingElseChanged();
            source.Check();
        }
    }
}

const std::string kSixKeysOff =
    "PowerLed_Common=0\nPowerLed_Ring=1\nPowerLed_Mail=0\nPowerLed_Mute=0\nPowerLed_HoldHeld=0\n"
    "PowerLed_TalkDial=0\n";
const std::string kSixKeysOffButThree = "PowerLed_Common=3\nPowerLed_Ring=1\nPowerLed_Mail=0\nPowerLed_Mute=0\n"
                                        "PowerLed_HoldHeld=0\nPowerLed_TalkDial=3\n";

/// The two keys that come from the saved value for idle and talk.
std::string Both(const std::string& value)
{
    return "PowerLed_Common=" + value + "\nPowerLed_TalkDial=" + value + "\n";
}

struct PowerLedRow {
    const char* close; // null: no key, here and below
    const char* mail;
    const char* idleAndTalk;
    std::string written; // empty: nothing
};

void ExpectPowerLeds(const std::vector<PowerLedRow>& rows)
{
    for (const PowerLedRow& row : rows) {
        const std::string saved = "[Features]\n" + Line("ClosePowerLight", row.close) + Line("PowerLedMail", row.mail) +
                                  Line("PowerLedIdle&Talk", row.idleAndTalk);
        SCOPED_TRACE(saved);
        PhoneImage phone;
        phone.Put(kHandOver, saved);
        phone.Put(kUserIni, kQuietUser);
        const UntouchedFiles source(phone, {kHandOver});
        phone.Run("2");
        if (!row.written.empty())
            phone.Expect(kUserIni, kQuietUser + "\n[PowerLed]\n" + row.written);
        phone.ExpectNothingElseChanged();
        source.Check();
    }
}

struct SyslogRow {
    const char* type;   // null: no key
    const char* server; // null: no key
    const char* after;  // null: untouched
};

void ExpectSyslogKeys(const std::vector<SyslogRow>& rows)
{
    for (const SyslogRow& row : rows) {
        const std::string saved = "[Syslog]\n" + Line("eLogType", row.type) + Line("strServerName", row.server);
        SCOPED_TRACE(saved);
        PhoneImage phone;
        phone.Put(kHandOver, saved);
        phone.Put(kUserIni, kQuietUser);
        phone.Put(kSystem, "; system\n[Syslog]\neLogType=9\nstrServerName=old\n");
        const UntouchedFiles source(phone, {kHandOver});
        const UntouchedFiles target(phone, {kSystem});
        phone.Run("2");
        if (row.after == nullptr)
            target.Check();
        else
            phone.Expect(kSystem, std::string("; system\n[Syslog]\neLogType=9\nstrServerName=old\n") + row.after);
        phone.ExpectNothingElseChanged();
        source.Check();
    }
}

} // namespace

TEST(MigrateVersionSettings, WithoutTheHandOverFileNothingChanges)
{
    PhoneImage phone;
    phone.Put(kUserIni,
              "[Feature]\nRingbackTimeout=90\n[Features]\nClosePowerLight=1\n[Backlight]\nnBacklightTime=5\n");
    phone.Put(kSystem, "[Syslog]\neLogType=3\nstrServerName=syslog.example.com\n");
    phone.Put(Account(0), "[account]\nSCALineKeyNumber=2\n");
    phone.Put("/config/data/linekey.xml", "<dsskey><item type=\"28\"><itemdata line=\"2\"/></item></dsskey>");
    const UntouchedFiles files(phone, {kUserIni, kSystem, Account(0), "/config/data/linekey.xml"});
    phone.Run("2");
    phone.ExpectNothingElseChanged();
    files.Check();

    std::filesystem::create_symlink("nowhere.cfg", phone.HostPath(kHandOver)); // a link to nothing is no file
    phone.Run("2");
    phone.ExpectNothingElseChanged();
    files.Check();
}

TEST(MigrateVersionSettings, AnEmptyHandOverFileLeavesAllButTheBacklightAsItIs)
{
    PhoneImage phone;
    phone.Put(kHandOver, "");
    phone.Put(kUserIni, "[Feature]\nRingbackTimeout=90\n[BLFLed]\nBLFLedMode=7\n[PowerLed]\nPowerLed_Mail=7\n"
                        "[Backlight]\nnBacklightTime=5\n");
    phone.Put(kSystem, "[Syslog]\nLogType=7\nSyslogServer=here\n");
    phone.Put(Account(0), "[account]\nSCALineKeyNumber=2\n");
    const UntouchedFiles files(phone, {kHandOver, kSystem, Account(0)});
    phone.Run("2");
    phone.Expect(kUserIni, "[Feature]\nRingbackTimeout=90\n[BLFLed]\nBLFLedMode=7\n[PowerLed]\nPowerLed_Mail=7\n"
                           "[Backlight]\nnBacklightTime=300\n");
    phone.ExpectNothingElseChanged();
    files.Check();
    EXPECT_THAT(phone.Reports(), testing::IsEmpty());
    EXPECT_THAT(phone.Output(), testing::IsEmpty());
}

TEST(MigrateVersionSettingsBLFLed, ANotificationOfOneGivesModeOne)
{
    ExpectBLFLedModes({
        {"5", "1", "1"},
        {"0", "1", "1"},
        {"none", "1", "1"},
        {"-7", "+1", "1"},
        {"99999999999", "01", "1"},
        {"1", "1x", "1"},
        {"1", "\v1", "1"},
    });
}

TEST(MigrateVersionSettingsBLFLed, AnyOtherNotificationGivesTwiceTheSavedValue)
{
    ExpectBLFLedModes({
        {"1", "0", "2"},
        {"0", "0", "0"},
        {"1", "2", "2"},
        {"1", "-1", "2"},
        {"1", "10", "2"},
        {"1", "0x1", "2"},
        {"1", "none", "2"},
        {"1", "99999999999", "2"},
        {"1", "4294967297", "2"},
        {"3", "0", "6"},
        {"+3", "0", "6"},
        {"3 lamps", "0", "6"},
        {"1 2", "0", "2"},
        {"\f\v3", "0", "6"},
        {"- 3", "0", "0"},
        {"--3", "0", "0"},
        {"3.9", "0", "6"},
        {"0x10", "0", "0"},
        {"010", "0", "20"},
        {"none", "0", "0"},
        {"\"1\"", "0", "0"},
        {"-1", "0", "-2"},
        {"1073741823", "0", "2147483646"},
        {"1073741824", "0", "2147483647"},
        {"2147483647", "0", "2147483647"},
        {"99999999999", "0", "2147483647"},
        {"99999999999999999999999", "0", "2147483647"},
        {"-1073741824", "0", "-2147483648"},
        {"-1073741825", "0", "-2147483648"},
        {"-2147483648", "0", "-2147483648"},
        {"-99999999999", "0", "-2147483648"},
        {"-99999999999999999999999", "0", "-2147483648"},
    });
}

TEST(MigrateVersionSettingsBLFLed, WithoutBothSavedValuesTheModeStays)
{
    ExpectBLFLedModes({
        {"1", "", nullptr},
        {"", "1", nullptr},
        {"", "0", nullptr},
        {"", "", nullptr},
        {" \t ", "1", nullptr},
        {"1", nullptr, nullptr},
        {nullptr, "1", nullptr},
        {nullptr, nullptr, nullptr},
    });
}

TEST(MigrateVersionSettingsBLFLed, OnlyTheExactNamesCount)
{
    for (const char* saved :
         {"[Features]\nBLFLedOffIdle=1\nBLFNotifyType=0\n", "[features]\nBLFLedOffIdle=1\nBLfNotifyType=0\n",
          "BLFLedOffIdle=1\nBLfNotifyType=0\n", "[Syslog]\nBLFLedOffIdle=1\nBLfNotifyType=0\n"}) {
        SCOPED_TRACE(saved);
        PhoneImage phone;
        phone.Put(kHandOver, saved);
        phone.Put(kUserIni, kQuietUser);
        phone.Run("2");
        phone.ExpectNothingElseChanged();
    }
}

TEST(MigrateVersionSettingsPowerLed, ALightThatWasOffSetsAllSixKeys)
{
    ExpectPowerLeds({
        {"1", nullptr, "0", kSixKeysOff},
        {"1", "1", "0", kSixKeysOff},
        {"1", "1", nullptr, kSixKeysOff},
        {"1", "1", "", kSixKeysOff},
        {"1", nullptr, "3", kSixKeysOffButThree},
        {"2", nullptr, "0", kSixKeysOff},
        {"-1", nullptr, "0", kSixKeysOff},
        {"+1", nullptr, "none", kSixKeysOff},
        {"1x", nullptr, nullptr, kSixKeysOff},
        {"2147483647", nullptr, "0", kSixKeysOff},
        {"-2147483648", nullptr, "0", kSixKeysOff},
        {"99999999999", nullptr, "0", kSixKeysOff},
        {"4294967296", nullptr, "0", kSixKeysOff},
        {"-99999999999", "5", "3", kSixKeysOffButThree},
    });
}

TEST(MigrateVersionSettingsPowerLed, OfALightThatWasOnAZeroForIdleAndTalkIsInverted)
{
    ExpectPowerLeds({
        {"0", nullptr, "0", Both("1")},
        {"0", nullptr, "none", Both("1")},
        {"none", nullptr, "0", Both("1")},
        {"-0", nullptr, "0", Both("1")},
        {"0x1", nullptr, "-", Both("1")},
        {"0", nullptr, "3", Both("3")},
        {"0", nullptr, "-3", Both("-3")},
        {"0", "1", "0", "PowerLed_Mail=1\n" + Both("1")},
        {"0", "1", nullptr, "PowerLed_Mail=1\n"},
        {"0", "1", "", "PowerLed_Mail=1\n"},
        {"0", "", nullptr, ""},
        {"0", nullptr, nullptr, ""},
        {"0", "", "", ""},
    });
}

TEST(MigrateVersionSettingsPowerLed, WithoutASavedLightAZeroForIdleAndTalkStays)
{
    ExpectPowerLeds({
        {nullptr, nullptr, "0", Both("0")},
        {"", nullptr, "0", Both("0")},
        {" \t", nullptr, "none", Both("0")},
        {nullptr, nullptr, "3", Both("3")},
        {nullptr, nullptr, "1", Both("1")},
        {nullptr, nullptr, "-1", Both("-1")},
        {nullptr, nullptr, " +1 or so", Both("1")},
        {nullptr, nullptr, "2147483647", Both("2147483647")},
        {nullptr, nullptr, "-2147483648", Both("-2147483648")},
        {nullptr, nullptr, "99999999999", Both("2147483647")},
        {nullptr, nullptr, "-99999999999", Both("-2147483648")},
        {nullptr, "0", nullptr, "PowerLed_Mail=0\n"},
        {"", "none", "", "PowerLed_Mail=0\n"},
        {nullptr, "-2", nullptr, "PowerLed_Mail=-2\n"},
        {nullptr, "+2 ", nullptr, "PowerLed_Mail=2\n"},
        {nullptr, "0x2", nullptr, "PowerLed_Mail=0\n"},
        {nullptr, "99999999999", nullptr, "PowerLed_Mail=2147483647\n"},
        {nullptr, "-99999999999", nullptr, "PowerLed_Mail=-2147483648\n"},
        {nullptr, "1", "2", "PowerLed_Mail=1\n" + Both("2")},
        {nullptr, nullptr, nullptr, ""},
        {"", "", "", ""},
    });
}

TEST(MigrateVersionSettingsPowerLed, KeysThatAreThereChangeInTheirPlace)
{
    PhoneImage phone;
    phone.Put(kHandOver, "[Features]\nClosePowerLight=0\nPowerLedMail=1\nPowerLedIdle&Talk=0\n");
    phone.Put(kUserIni, "[PowerLed]\nPowerLed_TalkDial = 9\nPowerLed_Ring = 9\nPowerLed_Mail = 9\n\n" + kQuietUser);
    phone.Run("2");
    phone.Expect(kUserIni,
                 "[PowerLed]\nPowerLed_TalkDial = 1\nPowerLed_Ring = 9\nPowerLed_Mail = 1\nPowerLed_Common = 1\n\n" +
                     kQuietUser);
    phone.ExpectNothingElseChanged();
}

TEST(MigrateVersionSettingsPowerLed, ALightThatWasOffPutsOutTheQueueStatusLightOfAccounts0To15)
{
    PhoneImage phone;
    phone.Put(kHandOver, "[Features]\nClosePowerLight=1\n");
    phone.Put(kUserIni, kQuietUser);
    const std::string account = "[account]\nSCALineKeyNumber=2\n";
    for (int number = 0; number <= 17; ++number)
        phone.Put(Account(number), account);
    phone.Put(Account(1), account + "\n[CallCenter]\nbEnableQueueStatusLight = 1\nbEnable=1\n");
    phone.Put(Account(2), "[account]\r\nSCALineKeyNumber=2\r\n[CallCenter]\r\nbEnable=1");
    phone.Put(Account(16), account + "\n[CallCenter]\nbEnableQueueStatusLight=1\n");
    const UntouchedFiles others(phone, {Account(16), Account(17), kHandOver});
    phone.Run("2");
    for (int number = 0; number <= 15; ++number)
        phone.Expect(Account(number), number == 1 ? account + "\n[CallCenter]\nbEnableQueueStatusLight = 0\nbEnable=1\n"
                                      : number == 2 ? "[account]\r\nSCALineKeyNumber=2\r\n[CallCenter]\r\nbEnable=1\r\n"
                                                      "bEnableQueueStatusLight=0\r\n"
                                                    : account + "\n[CallCenter]\nbEnableQueueStatusLight=0\n");
    phone.Expect(kUserIni, kQuietUser + kPowerLedOff);
    phone.ExpectNothingElseChanged();
    others.Check();
}

TEST(MigrateVersionSettingsPowerLed, MissingAccountsAreNotMade)
{
    PhoneImage phone;
    phone.Put(kHandOver, "[Features]\nClosePowerLight=1\n");
    phone.Put(kUserIni, kQuietUser);
    phone.Put(Account(15), "[account]\nSCALineKeyNumber=2\n");
    phone.PutFolder(Account(3));
    phone.Run("2");
    phone.Expect(kUserIni, kQuietUser + kPowerLedOff);
    phone.Expect(Account(15), "[account]\nSCALineKeyNumber=2\n\n[CallCenter]\nbEnableQueueStatusLight=0\n");
    phone.ExpectNothingElseChanged();
}

TEST(MigrateVersionSettingsPowerLed, ALightThatWasOnLeavesTheAccountsAlone)
{
    for (const char* saved : {"[Features]\nClosePowerLight=0\nPowerLedMail=1\nPowerLedIdle&Talk=1\n",
                              "[Features]\nClosePowerLight=\nPowerLedMail=1\nPowerLedIdle&Talk=0\n"}) {
        PhoneImage phone;
        phone.Put(kHandOver, saved);
        phone.Put(kUserIni, kQuietUser);
        phone.Put(Account(0), "[account]\nSCALineKeyNumber=2\n[CallCenter]\nbEnableQueueStatusLight=1\n");
        const UntouchedFiles account(phone, {Account(0)});
        phone.Run("2");
        account.Check();
    }
}

TEST(MigrateVersionSettingsBacklight, WhateverIsStoredIsMultipliedBySixty)
{
    struct Row {
        const char* before;
        const char* after;
    };
    const Row rows[] = {
        {"=5\n", "=300\n"},
        {"=1\n", "=60\n"},
        {"=0\n", "=0\n"},
        {"=300\n", "=18000\n"},
        {"=-5\n", "=-300\n"},
        {"=+5\n", "=300\n"},
        {"=5 minutes\n", "=300\n"},
        {" = 5 \n", " = 300\n"},
        {"=5", "=300"},
        {"=5\r\n", "=300\r\n"},
        {"=010\n", "=600\n"},
        {"=0x10\n", "=0\n"},
        {"=5.5\n", "=300\n"},
        {"=\n", "=0\n"},
        {"=soon\n", "=0\n"},
        {"=35791394\n", "=2147483640\n"},
        {"=35791395\n", "=2147483647\n"},
        {"=2147483647\n", "=2147483647\n"},
        {"=99999999999\n", "=2147483647\n"},
        {"=-35791394\n", "=-2147483640\n"},
        {"=-35791395\n", "=-2147483648\n"},
        {"=-2147483648\n", "=-2147483648\n"},
        {"=-99999999999\n", "=-2147483648\n"},
        {"=5\nnBacklightTime=7\n", "=300\nnBacklightTime=7\n"},
    };
    const std::string text = "[Feature]\nRingbackTimeout=90\n[Backlight]\n; time\nnBacklightTime";
    for (const Row& row : rows) {
        SCOPED_TRACE(row.before);
        PhoneImage phone;
        phone.Put(kHandOver, "");
        phone.Put(kUserIni, text + row.before);
        phone.Run("2");
        phone.Expect(kUserIni, text + row.after);
        phone.ExpectNothingElseChanged();
    }
}

TEST(MigrateVersionSettingsBacklight, AnAbsentTimeBecomesSixtySeconds)
{
    struct Row {
        const char* before;
        const char* after;
    };
    const Row rows[] = {
        {"", "\n[Backlight]\nnBacklightTime=60\n"},
        {"[Backlight]\n", "[Backlight]\nnBacklightTime=60\n"},
        {"[Backlight]\nnActiveLevel=9\n\n[End]\n", "[Backlight]\nnActiveLevel=9\nnBacklightTime=60\n\n[End]\n"},
        {"[backlight]\nnBacklightTime=5\n", "[backlight]\nnBacklightTime=5\n\n[Backlight]\nnBacklightTime=60\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.before);
        PhoneImage phone;
        phone.Put(kHandOver, "");
        phone.Put(kUserIni, std::string("[Feature]\nRingbackTimeout=90\n") + row.before);
        phone.Run("2");
        phone.Expect(kUserIni, std::string("[Feature]\nRingbackTimeout=90\n") + row.after);
        phone.ExpectNothingElseChanged();
    }
}

TEST(MigrateVersionSettingsBacklight, AMissingUserFileIsMade)
{
    PhoneImage phone;
    phone.Put(kHandOver, "");
    phone.PutFolder("/config/user");
    phone.Run("2");
    phone.Expect(kUserIni, "[Feature]\nRingbackTimeout=180\n\n[Backlight]\nnBacklightTime=60\n");
    phone.ExpectNothingElseChanged();
}

TEST(MigrateVersionSettingsSyslog, BothTargetKeysComeFromBothSavedValues)
{
    ExpectSyslogKeys({
        {"3", "syslog.example.com", "LogType=2\nSyslogServer=syslog.example.com\n"},
        {"1", "0", "LogType=0\nSyslogServer=0\n"},
        {"0", "s", "LogType=-1\nSyslogServer=s\n"},
        {"-1", "s", "LogType=-2\nSyslogServer=s\n"},
        {"+3", "s", "LogType=2\nSyslogServer=s\n"},
        {"3rd", "s", "LogType=2\nSyslogServer=s\n"},
        {"0x3", "s", "LogType=-1\nSyslogServer=s\n"},
        {"none", "s", "LogType=-1\nSyslogServer=s\n"},
        {"2147483647", "s", "LogType=2147483646\nSyslogServer=s\n"},
        {"99999999999", "s", "LogType=2147483646\nSyslogServer=s\n"},
        {"-2147483647", "s", "LogType=-2147483648\nSyslogServer=s\n"},
        {"-2147483648", "s", "LogType=-2147483648\nSyslogServer=s\n"},
        {"-99999999999", "s", "LogType=-2147483648\nSyslogServer=s\n"},
        {"3", " ?\"a b\";#=%s\xc3\xa4\xff \t", "LogType=2\nSyslogServer=?\"a b\";#=%s\xc3\xa4\xff \t\n"},
    });
}

TEST(MigrateVersionSettingsSyslog, WithoutBothSavedValuesNothingIsWritten)
{
    ExpectSyslogKeys({
        {"3", "", nullptr},
        {"3", " \t", nullptr},
        {"3", nullptr, nullptr},
        {"", "s", nullptr},
        {nullptr, "s", nullptr},
        {"", "", nullptr},
        {nullptr, nullptr, nullptr},
    });
}

TEST(MigrateVersionSettingsSyslog, TheSavedValuesStandInTheirOwnSection)
{
    PhoneImage phone;
    phone.Put(kHandOver, "[Features]\neLogType=3\nstrServerName=s\n[Log]\neLogType=3\nstrServerName=s\n");
    phone.Put(kUserIni, kQuietUser);
    phone.PutFolder("/config/system");
    phone.Run("2");
    phone.ExpectNothingElseChanged();
}

TEST(MigrateVersionSettingsSyslog, AMissingSystemFileIsMadeButNotItsFolder)
{
    PhoneImage phone;
    phone.Put(kHandOver, "[Syslog]\neLogType=3\nstrServerName=s\n");
    phone.Put(kUserIni, kQuietUser);
    phone.Run("2");
    phone.ExpectNothingElseChanged();
    phone.PutFolder("/config/system");
    phone.Run("2");
    phone.Expect(kSystem, "[Syslog]\nLogType=2\nSyslogServer=s\n");
    phone.ExpectNothingElseChanged();
}

TEST(MigrateVersionSettingsSyslog, KeysThatAreThereChangeInTheirPlace)
{
    PhoneImage phone;
    phone.Put(kHandOver, "[Syslog]\neLogType=3\nstrServerName=new.example.com\n");
    phone.Put(kUserIni, kQuietUser);
    phone.Put(kSystem, "[Syslog]\r\nSyslogServer = old.example.com\r\nnLevel = 5\r\nLogType = 7\r\n\r\n[End]\r\n");
    phone.Run("2");
    phone.Expect(kSystem, "[Syslog]\r\nSyslogServer = new.example.com\r\nnLevel = 5\r\nLogType = 2\r\n\r\n[End]\r\n");
    phone.ExpectNothingElseChanged();
}
