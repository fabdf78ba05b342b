// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The passes of each mode and their order, and that none ends a run before its last. The order is derived from the
// reports and, for the passes without reports, from files that are links to one another: each order would leave other
// bytes.

#include "runSequence.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "phoneImage.h"

namespace
{

using Lines = std::vector<std::string>;

constexpr char kSystem[] = "/config/system/system.ini";
constexpr char kFactory[] = "/phone/factory/user/user.ini";
constexpr char kHandOver[] = "/tmp/VersionInfo.cfg";
constexpr char kDirectIP[] = "/config/user/voip/directip.cfg";
constexpr char kAccount5[] = "/config/user/voip/sipAccount5.cfg";
constexpr char kAccount16[] = "/config/user/voip/sipAccount16.cfg";
constexpr char kLineKeys[] = "/config/data/linekey.xml";
constexpr char kProgramKeys[] = "/config/data/programkey.xml";
constexpr char kTable[] = "/phone/resource/kestrune.xml";

const std::string kSixLamps = "[PowerLed]\nPowerLed_Common=0\nPowerLed_Ring=1\nPowerLed_Mail=0\nPowerLed_Mute=0\n"
                              "PowerLed_HoldHeld=0\nPowerLed_TalkDial=0\n";

/// A phone on which every pass has something to do or to report.
void PutWorkForEveryPass(PhoneImage& phone)
{
    phone.Put(kUserIni, "[Features]\nBLFLedOffIdle=1\n");
    phone.Put(kSystem, "[Syslog]\neLogType=3\nstrServerName=s\n");
    phone.Put(kFactory, "[Sync]\nSyncCfgByVersion=1\n");
    phone.Put(kHandOver, "[Features]\nBLfNotifyType=1\nBLFLedOffIdle=1\n[Syslog]\neLogType=2\nstrServerName=t\n");
    phone.Put(kAccount5, "[account]\ndirectip=1\n");
    phone.Put("/phone/factory/user/voip/sipAccount16.cfg", "[account]\nLabel=?factory\n");
    phone.Put(kLineKeys, "<dsskey/>");
    phone.Put(kTable, "<translate/>");
    phone.Put("/config/data/contactData.xml", "<contactData/>");
    phone.Put("/config/data/remotebook.xml", "");
    phone.Put("/phone/factory/certs/phoneca/root.pem", "certificate");
    phone.PutFolder("/config/certs/phoneca");
}

const Lines kTableReports = {"app_log 60/4: No config translate record!"};
const Lines kTranslatorReports = {
    "chTraceStack: enter ContactV4XToV50",
    "chTraceStack: enter GetV4XContactData",
    "chTraceStack: leave GetV4XContactData",
    "etlTrace 2: Contact list is empty !!",
    "chTraceStack: leave ContactV4XToV50",
    "chTraceStack: enter DialPlanV4XToV50",
    "etlTrace 2: The file [/config/data/dialplan.xml] is not found !!",
    "chTraceStack: leave DialPlanV4XToV50",
    "chTraceStack: enter DialNowV4XToV50",
    "etlTrace 2: The file [/config/data/dialnow.xml] is not found !!",
    "chTraceStack: leave DialNowV4XToV50",
    "chTraceStack: enter DSSKeyV4XToV50",
    "etlTrace 2: DSSKey file not exist !",
    "chTraceStack: leave DSSKeyV4XToV50",
    "chTraceStack: enter DoorPhoneV4XToV50",
    "etlTrace 2: DoorPhone file not exist !",
    "chTraceStack: leave DoorPhoneV4XToV50",
    "chTraceStack: enter RemoteBookV4XToV50",
    "etlTrace 2: Fail to load remote phonebook !!",
    "chTraceStack: leave RemoteBookV4XToV50",
};
const Lines kCertificateReports = {
    "app_log 60/6: Sync cert cp /phone/factory/certs/phoneca/root.pem /config/certs/phoneca/root.pem"};
const Lines kPasswordReports = {"app_log 60/6: No need trans password file !! Current status [decrypt]"};

Lines Joined(const std::vector<Lines>& parts)
{
    Lines lines;
    for (const Lines& part : parts)
        lines.insert(lines.end(), part.begin(), part.end());
    return lines;
}

/// The files that the start-up fix-ups change, afterwards.
const std::string kFixedUser = "[Features]\nBLFLedOffIdle=1\n\n[Feature]\nRingbackTimeout=180\n";
const std::string kFixedAccount5 = "[account]\ndirectip=1\nSCALineKeyNumber=-1\n";

} // namespace

TEST(RunSequence, AllAndDevReportTheirPassesInOrder)
{
    for (const std::string mode : {"all", "dev"}) {
        SCOPED_TRACE(mode);
        PhoneImage phone;
        PutWorkForEveryPass(phone);
        phone.Run(mode);
        EXPECT_EQ(phone.ReportsWithScopes(), Joined({kTableReports, kTranslatorReports, kCertificateReports,
                                                     mode == "all" ? kPasswordReports : Lines()}));
        EXPECT_EQ(phone.Output(), Lines({"bEncrypt=0"}));
        phone.Expect(kUserIni, kFixedUser);
        phone.Expect(kAccount5, kFixedAccount5);
        phone.Expect("/config/certs/phoneca/root.pem", "certificate");
        phone.ExpectNothingElseChanged();
    }
}

TEST(RunSequence, PwdRunsTheFixUpsAndThePasswordPass)
{
    PhoneImage phone;
    PutWorkForEveryPass(phone);
    phone.Run("pwd");
    EXPECT_EQ(phone.ReportsWithScopes(), kPasswordReports);
    EXPECT_THAT(phone.Output(), testing::IsEmpty());
    phone.Expect(kUserIni, kFixedUser);
    phone.Expect(kAccount5, kFixedAccount5);
    phone.ExpectNothingElseChanged();
}

TEST(RunSequence, OneRunsTheFixUpsTheSyncAndTheExtraction)
{
    PhoneImage phone;
    PutWorkForEveryPass(phone);
    phone.Run("1");
    EXPECT_THAT(phone.ReportsWithScopes(), testing::IsEmpty());
    EXPECT_THAT(phone.Output(), testing::IsEmpty());
    phone.Expect(kUserIni, kFixedUser);
    phone.Expect(kHandOver, "[Features]\nBLfNotifyType=\nBLFLedOffIdle=1\nClosePowerLight=\nPowerLedIdle&Talk=\n"
                            "PowerLedMail=\n[Syslog]\neLogType=3\nstrServerName=s\n");
    phone.Expect(kDirectIP, kFixedAccount5);
    phone.ExpectMissing(kAccount5);
    phone.ExpectNothingElseChanged();
}

TEST(RunSequence, TwoRunsTheFixUpsTheMigrationAndTheRestore)
{
    PhoneImage phone;
    PutWorkForEveryPass(phone);
    phone.Run("2");
    EXPECT_THAT(phone.ReportsWithScopes(), testing::IsEmpty());
    EXPECT_THAT(phone.Output(), testing::IsEmpty());
    phone.Expect(kUserIni, kFixedUser + "\n[BLFLed]\nBLFLedMode=1\n\n[Backlight]\nnBacklightTime=60\n");
    phone.Expect(kSystem, "[Syslog]\neLogType=3\nstrServerName=s\nLogType=1\nSyslogServer=t\n");
    phone.Expect(kAccount5, kFixedAccount5);
    phone.Expect(kAccount16, "[account]\nLabel=factory\n"); // after the fix-ups, which would have given it a key
    phone.Expect(kLineKeys, "<?xml version=\"1.0\"?>\n<dsskey />\n");
    phone.ExpectNothingElseChanged();
}

TEST(RunSequence, AnyOtherWordRunsTheFixUpsAlone)
{
    for (const char* mode :
         {"",     "0",   "3",    "12",   " 1",    "1 ",     "2\n",    "+1",        "01",      "02",
          "1.0",  "All", "DEV",  "pwd ", "al",    "alldev", "--help", "--version", "two",     "-h",
          "help", "ALL", "all ", " all", "all\n", "allx",   "Dev",    "PWD",       "pwd,dev", "%s%n"}) {
        SCOPED_TRACE(mode);
        PhoneImage phone;
        PutWorkForEveryPass(phone);
        phone.Run(mode);
        EXPECT_THAT(phone.ReportsWithScopes(), testing::IsEmpty());
        EXPECT_THAT(phone.Output(), testing::IsEmpty());
        phone.Expect(kUserIni, kFixedUser);
        phone.Expect(kAccount5, kFixedAccount5);
        phone.ExpectNothingElseChanged();
    }
}

TEST(RunSequence, OnlyTheFirstArgumentIsTheMode)
{
    PhoneImage phone;
    PutWorkForEveryPass(phone);
    EXPECT_EQ(phone.RunWith({"--help", "1"}).exitStatus, 0);
    phone.Expect(kUserIni, kFixedUser);
    phone.Expect(kAccount5, kFixedAccount5);
    phone.ExpectNothingElseChanged();
    EXPECT_EQ(phone.RunWith({"1", "2"}).exitStatus, 0);
    EXPECT_EQ(phone.Get(kDirectIP), kFixedAccount5);
    EXPECT_FALSE(phone.Has(kAccount16));
}

TEST(RunSequence, TheAccountsAreFixedUpBeforeTheRingbackTimeout)
{
    PhoneImage phone;
    phone.Put(kUserIni, "");
    phone.PutFolder("/config/user/voip");
    std::filesystem::create_symlink(kUserIni, phone.HostPath("/config/user/voip/sipAccount0.cfg"));
    phone.Run("other");
    phone.Expect(kUserIni, "[account]\nSCALineKeyNumber=-1\n\n[Feature]\nRingbackTimeout=180\n");
    phone.ExpectNothingElseChanged();
}

TEST(RunSequence, TheTableSeesTheFixUpsAndItsResultsCountForThePassesBehindIt)
{
    for (const std::string mode : {"all", "dev"}) {
        SCOPED_TRACE(mode);
        PhoneImage phone;
        PutWorkForEveryPass(phone);
        // Only after the table the translators are enabled and the two locks are equal.
        phone.Put("/config/version.ini", "[SyncConfig]\nbEnableFromOld=0\n");
        phone.Put(kUserIni, "[New]\nEnable=1\nLock=1\n\n[PhoneSetting]\nEnLock=0\n");
        phone.Put(kFactory, "[PhoneSetting]\nEnLock=1\n");
        phone.Put(kTable,
                  "<t><r srcFile='/config/user/user.ini' srcSec='Feature' srcKey='RingbackTimeout' dstSec='New'/>"
                  "<r srcFile='/config/user/user.ini' srcSec='New' srcKey='Enable' dstFile='/config/version.ini' "
                  "dstSec='SyncConfig' dstKey='bEnableFromOld'/>"
                  "<r srcFile='/config/user/user.ini' srcSec='New' srcKey='Lock' dstSec='PhoneSetting' "
                  "dstKey='EnLock'/></t>");
        phone.Run(mode);
        const Lines encrypted = {"app_log 60/6: No need trans password file !! Current status [encrypt]"};
        EXPECT_EQ(phone.ReportsWithScopes(),
                  Joined({kTranslatorReports, kCertificateReports, mode == "all" ? encrypted : Lines()}));
        phone.Expect(kUserIni, "[New]\nEnable=1\nLock=1\nRingbackTimeout=180\n\n[PhoneSetting]\nEnLock=1\n\n"
                               "[Feature]\nRingbackTimeout=180\n");
    }
}

TEST(RunSequence, ThePasswordPassSeesTheFixUps)
{
    PhoneImage phone;
    phone.Put(kUserIni, "");
    phone.Put(kFactory, "[PhoneSetting]\nEnLock=1\n");
    phone.Put("/phone/resource/encryptconfig.xml",
              "<list><entry file='/config/user/user.ini' section='Feature' key='RingbackTimeout'/></list>");
    phone.Run("pwd");
    ASSERT_EQ(phone.Reports().size(), 1u);
    EXPECT_THAT(phone.Reports().front(), testing::StartsWith("etlTrace 2: Encrypt:(180)->("));
}

TEST(RunSequence, OneSavesTheSettingsAfterTheFixUpsAndBeforeTheAccountGoes)
{
    PhoneImage phone;
    phone.Put(kUserIni, "[Features]\nPowerLedMail=1\n");
    phone.Put(kFactory, "[Sync]\nSyncCfgByVersion=1\n");
    phone.Put("/config/user/voip/sipAccount2.cfg", "");
    phone.Put(kAccount5, "[account]\ndirectip=1\n[Syslog]\neLogType=3\nstrServerName=s\n");
    phone.PutFolder("/config/system");
    std::filesystem::create_symlink(kAccount5, phone.HostPath(kSystem));
    std::filesystem::create_symlink("/config/user/voip/sipAccount2.cfg", phone.HostPath(kHandOver));
    phone.Run("1");
    phone.Expect(kUserIni, "[Features]\nPowerLedMail=1\n\n[Feature]\nRingbackTimeout=180\n");
    phone.Expect("/config/user/voip/sipAccount2.cfg",
                 "[account]\nSCALineKeyNumber=-1\n\n"
                 "[Features]\nBLFLedOffIdle=\nBLfNotifyType=\nClosePowerLight=\nPowerLedIdle&Talk=\nPowerLedMail=1\n\n"
                 "[Syslog]\neLogType=3\nstrServerName=s\n");
    phone.Expect(kDirectIP, "[account]\ndirectip=1\nSCALineKeyNumber=-1\n[Syslog]\neLogType=3\nstrServerName=s\n");
    phone.ExpectMissing(kAccount5);
    phone.ExpectNothingElseChanged();
}

TEST(RunSequence, TwoMigratesBeforeItRestoresTheAccount)
{
    // Account 5 is a link to the direct-IP file, so what the migration writes there reaches account 16.
    PhoneImage phone;
    phone.Put(kHandOver, "[Features]\nClosePowerLight=1\n");
    phone.Put(kUserIni, "");
    phone.Put(kDirectIP, "[account]\nSCALineKeyNumber=2\n");
    std::filesystem::create_symlink("directip.cfg", phone.HostPath(kAccount5));
    phone.Run("2");
    phone.Expect(kUserIni, "[Feature]\nRingbackTimeout=180\n\n" + kSixLamps + "\n[Backlight]\nnBacklightTime=60\n");
    phone.Expect(kAccount16, "[account]\nSCALineKeyNumber=2\n\n[CallCenter]\nbEnableQueueStatusLight=0\n");
    phone.ExpectMissing(kDirectIP);
    phone.ExpectNothingElseChanged();
}

TEST(RunSequence, TheStepsOfTheMigrationFollowOneAnother)
{
    // Each new section is added at the end of the file, so the sections are in the order of the steps.
    PhoneImage phone;
    phone.Put(kHandOver, "[Features]\nBLFLedOffIdle=1\nBLfNotifyType=0\nClosePowerLight=1\n");
    phone.Put(kUserIni, "");
    phone.Run("2");
    phone.Expect(kUserIni, "[Feature]\nRingbackTimeout=180\n\n[BLFLed]\nBLFLedMode=2\n\n" + kSixLamps +
                               "\n[Backlight]\nnBacklightTime=60\n");
    phone.ExpectNothingElseChanged();
}

TEST(RunSequence, TheKeyLayoutsComeBehindTheBacklightAndBeforeTheSystemLog)
{
    // The INI files are links to key layouts. Saving a layout drops the text after its root element: sections that were
    // added before it, but not those that are added after it.
    PhoneImage phone;
    phone.Put(kHandOver, "[Features]\nBLFLedOffIdle=1\nBLfNotifyType=0\nClosePowerLight=1\n\n"
                         "[Syslog]\neLogType=3\nstrServerName=s\n");
    phone.Put(kLineKeys, "<dsskey/>\n");
    phone.Put(kProgramKeys, "<programkey/>\n");
    phone.PutFolder("/config/user");
    phone.PutFolder("/config/system");
    std::filesystem::create_symlink(kLineKeys, phone.HostPath(kUserIni));
    std::filesystem::create_symlink(kProgramKeys, phone.HostPath(kSystem));
    phone.Run("2");
    phone.Expect(kLineKeys, "<?xml version=\"1.0\"?>\n<dsskey />\n");
    phone.Expect(kProgramKeys, "<?xml version=\"1.0\"?>\n<programkey />\n\n[Syslog]\nLogType=2\nSyslogServer=s\n");
    phone.ExpectNothingElseChanged();
}

TEST(RunSequence, TheQueueStatusLightIsWrittenAtOnceAndThePowerLightAtItsFlush)
{
    // Account 0 is a link to user.ini: neither change is lost, and the account's comes first.
    PhoneImage phone;
    phone.Put(kHandOver, "[Features]\nClosePowerLight=1\n");
    phone.Put(kUserIni, "");
    phone.PutFolder("/config/user/voip");
    std::filesystem::create_symlink(kUserIni, phone.HostPath("/config/user/voip/sipAccount0.cfg"));
    phone.Run("2");
    phone.Expect(kUserIni, "[account]\nSCALineKeyNumber=-1\n\n[Feature]\nRingbackTimeout=180\n\n"
                           "[CallCenter]\nbEnableQueueStatusLight=0\n\n" +
                               kSixLamps + "\n[Backlight]\nnBacklightTime=60\n");
    phone.ExpectNothingElseChanged();
}

TEST(RunSequence, OnAnEmptyPhoneNothingIsWritten)
{
    for (const char* mode : {"all", "dev", "pwd", "other"}) {
        PhoneImage phone;
        phone.Run(mode);
        phone.ExpectNothingElseChanged();
    }
}

TEST(RunSequence, AnArgumentCountBelowTwoIsTheUsageAndNothingElse)
{
    struct Row {
        int count;
        const char* arguments[3];
        const char* printed;
    };
    const Row rows[] = {
        {0, {nullptr}, "(null)"},       {0, {"name", "all", nullptr}, "name"}, // arguments beyond the count are ignored
        {1, {"name", nullptr}, "name"}, {1, {"name", "all", nullptr}, "name"}, {-1, {"name", "all", nullptr}, "name"},
    };
    for (const Row& row : rows) {
        testing::internal::CaptureStderr();
        testing::internal::CaptureStdout();
        EXPECT_EQ(RunSequence(row.count, row.arguments), 0);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  std::string("app_log 60/6: Usage: \n#") + row.printed + " [all|dev|pwd]\n");
    }
}
