// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Modes that run one after another on one phone: its whole files after each of them.

#include <gtest/gtest.h>
#include <map>

#include "bundledPlatform.h"
#include "phoneImage.h"

namespace
{

using Files = std::map<std::string, std::string>;

/// Marks a file that a step removes.
const std::string kGone = "gone";

constexpr char kSystem[] = "/config/system/system.ini";
constexpr char kWeb[] = "/config/web.ini";
constexpr char kHandOver[] = "/tmp/VersionInfo.cfg";
constexpr char kAccount0[] = "/config/user/voip/sipAccount0.cfg";
constexpr char kAccount4[] = "/config/user/voip/sipAccount4.cfg";
constexpr char kAccount16[] = "/config/user/voip/sipAccount16.cfg";
constexpr char kDirectIP[] = "/config/user/voip/directip.cfg";
constexpr char kLineKeys[] = "/config/data/linekey.xml";
constexpr char kNewPlan[] = "/config/data/DialPlan.xml";
constexpr char kDoorPhones[] = "/config/data/doorphonedata.xml";
constexpr char kUserCert[] = "/config/certs/phoneca/ca.pem";

const std::string kToken = Enciphered("hello, phone", "NxCtIZlb8N+vWevKAOqtDvzgV0IboWX12AuHSQ");
const std::string kTokenTwice =
    Enciphered(kToken.c_str(), "eB/ZoLFj99qSyKAwH8JR7eNnWv3kbcCmx2/I3cTGSAnRkfusBHgw97AUlepoVCJgcNKXnzHB");

const std::string kFeatures = "[Features]\nBLFLedOffIdle=1\nBLfNotifyType=0\nClosePowerLight=1\nPowerLedIdle&Talk=0\n"
                              "PowerLedMail=1\n";
const std::string kOldLog = "[Syslog]\neLogType=3\nstrServerName=log.example.com\n";

std::string OldUser(const std::string& backlight)
{
    return kFeatures + "\n[Backlight]\nnBacklightTime=" + backlight + "\n";
}

/// After the fix-ups.
std::string FixedUser(const std::string& backlight = "5")
{
    return OldUser(backlight) + "\n[Feature]\nRingbackTimeout=60\n";
}

/// After mode "2" with a hand-over.
std::string NewUser(const std::string& backlight)
{
    return FixedUser(backlight) + "\n[BLFLed]\nBLFLedMode=2\n\n[PowerLed]\nPowerLed_Common=0\nPowerLed_Ring=1\n"
                                  "PowerLed_Mail=0\nPowerLed_Mute=0\nPowerLed_HoldHeld=0\nPowerLed_TalkDial=0\n";
}

const std::string kFixedAccount0 = "[account]\nCancelTimer=60\nSCALineKeyNumber=-1\n";
const std::string kNewAccount0 = kFixedAccount0 + "\n[CallCenter]\nbEnableQueueStatusLight=0\n";
const std::string kDirectAccount = "[account]\ndirectip=1\nSCALineKeyNumber=-1\n";
const std::string kSpareAccount = "[account]\nLabel=spare\n";

const std::string kNewLayout = "<?xml version=\"1.0\"?>\n<dsskey>\n\t<item type=\"28\">\n\t\t<itemdata line=\"2\" "
                               "history_type=\"2\" />\n\t</item>\n</dsskey>\n";

std::string Web(const std::string& pin)
{
    return "[Web]\nPin=" + pin + "\n";
}

std::string WebWithCopy(const std::string& pin, const std::string& copy)
{
    return Web(pin) + "Copy=" + copy + "\n";
}

std::string DoorPhone(const std::string& name)
{
    return "<DoorPhone>\n    <item id_name=\"" + name +
           "\" device_model=\"0\" display_name=\"\" phone_number=\"\" unlock_pin=\"\" send_audio=\"1\" "
           "send_video=\"1\" full_screen=\"1\" />\n</DoorPhone>\n";
}

/// A phone before any mode, on which each pass has something to do.
Files OldPhone()
{
    return {
        {kUserIni, OldUser("5")},
        {kSystem, kOldLog},
        {kWeb, Web("hello, phone")},
        {kAccount0, "[account]\nCancelTimer=60\n"},
        {kAccount4, "[account]\ndirectip=1\n"},
        {kLineKeys, "<dsskey><item type=\"28\"><itemdata line=\"2\"/></item></dsskey>"},
        {"/config/data/dialplan.xml", "<DialRule><Data Prefix='1'/></DialRule>"},
        {kDoorPhones, "<DoorPhone><item title='Gate'/></DoorPhone>"},
        {"/config/certs/phoneca/own.pem", "the user's own"},
        {"/phone/factory/user/user.ini", "[Sync]\nSyncCfgByVersion=1\n[PhoneSetting]\nEnLock=1\n"},
        {"/phone/factory/user/voip/sipAccount16.cfg", "[account]\nLabel=?spare\n"},
        {"/phone/factory/certs/phoneca/ca.pem", "certificate"},
        {"/phone/resource/kestrune.xml",
         "<t><r srcFile='/config/web.ini' srcSec='Web' srcKey='Pin' dstKey='Copy'/></t>"},
        {"/phone/resource/encryptconfig.xml", "<l><e file='/config/web.ini' section='Web' key='Pin'/></l>"},
    };
}

const Files kFixUps = {{kUserIni, FixedUser()}, {kAccount0, kFixedAccount0}, {kAccount4, kDirectAccount}};

/// The files that the certificate sync and the translators write.
const Files kNewData = {
    {kNewPlan, "<dialRule>\n    <data rule=\"1\" replace=\"\" lines=\"\" />\n</dialRule>\n"},
    {kDoorPhones, DoorPhone("Gate")},
    {kUserCert, "certificate"},
};

/// The files that mode "1" writes after the fix-ups.
const Files kHandedOver = {{kAccount4, kGone}, {kDirectIP, kDirectAccount}, {kHandOver, kFeatures + "\n" + kOldLog}};

/// The results of mode "2" for a hand-over and for a direct-IP account.
const Files kMigrated = {
    {kUserIni, NewUser("300")},   {kSystem, kOldLog + "LogType=2\nSyslogServer=log.example.com\n"},
    {kAccount0, kNewAccount0},    {kDirectIP, kGone},
    {kAccount16, kDirectAccount}, {kLineKeys, kNewLayout},
};

/// All of them; if several contain a file, that of the first.
Files operator+(Files first, const Files& second)
{
    first.insert(second.begin(), second.end());
    return first;
}

struct Step {
    const char* mode;
    Files changed; // whole, or kGone; every other file stays as it was before the step
};

void ExpectSequence(const std::vector<Step>& steps)
{
    PhoneImage phone;
    for (const auto& [path, bytes] : OldPhone())
        phone.Put(path, bytes);
    std::string trace = "modes";
    for (const Step& step : steps) {
        trace += std::string(" ") + step.mode;
        SCOPED_TRACE(trace);
        phone.Run(step.mode);
        for (const auto& [path, bytes] : step.changed) {
            if (bytes == kGone)
                phone.ExpectMissing(path);
            else
                phone.Expect(path, bytes);
        }
        phone.ExpectNothingElseChanged();
    }
}

} // namespace

TEST(ModeSequences, OneTwoAll)
{
    ExpectSequence({
        {"1", kHandedOver + kFixUps},
        {"2", kMigrated},
        {"all", kNewData + Files{{kWeb, WebWithCopy(kToken, "hello, phone")}}},
    });
}

TEST(ModeSequences, AllOneTwo)
{
    ExpectSequence({
        {"all", kNewData + kFixUps + Files{{kWeb, WebWithCopy(kToken, "hello, phone")}}},
        {"1", kHandedOver},
        {"2", kMigrated},
    });
}

TEST(ModeSequences, OneTwoDevPwd)
{
    ExpectSequence({
        {"1", kHandedOver + kFixUps},
        {"2", kMigrated},
        {"dev", kNewData + Files{{kWeb, WebWithCopy("hello, phone", "hello, phone")}}},
        {"pwd", {{kWeb, WebWithCopy(kToken, "hello, phone")}}},
    });
}

TEST(ModeSequences, PwdBeforeDevAndTheTableDeciphersWhatItCopies)
{
    ExpectSequence({
        {"pwd", kFixUps + Files{{kWeb, Web(kToken)}}},
        {"dev", kNewData + Files{{kWeb, WebWithCopy(kToken, "hello, phone")}}},
        {"1", kHandedOver},
    });
}

TEST(ModeSequences, AllTwiceEnciphersTwiceAndEmptiesTheDoorPhones)
{
    ExpectSequence({
        {"all", kNewData + kFixUps + Files{{kWeb, WebWithCopy(kToken, "hello, phone")}}},
        {"all", {{kWeb, WebWithCopy(kTokenTwice, "hello, phone")}, {kDoorPhones, DoorPhone("")}}},
        {"dev", {{kWeb, WebWithCopy(kTokenTwice, kToken)}}}, // one encipherment less
    });
}

TEST(ModeSequences, OneTwiceIsOnce)
{
    ExpectSequence({
        {"1", kHandedOver + kFixUps},
        {"1", {}},
        {"2", kMigrated},
    });
}

TEST(ModeSequences, TwoTwiceMultipliesAgainAndTakesTheFactoryAccount)
{
    ExpectSequence({
        {"1", kHandedOver + kFixUps},
        {"2", kMigrated},
        {"2", {{kUserIni, NewUser("18000")}, {kAccount16, kSpareAccount}}},
        {"1", {{kAccount16, kSpareAccount + "SCALineKeyNumber=-1\n"}}},
    });
}

TEST(ModeSequences, TwoBeforeOneMigratesNothing)
{
    ExpectSequence({
        {"2", kFixUps + Files{{kAccount16, kSpareAccount}}},
        {"1", kHandedOver + Files{{kAccount16, kSpareAccount + "SCALineKeyNumber=-1\n"}}},
        {"2", kMigrated},
    });
}

TEST(ModeSequences, TheAccountGoesOutAndInAsOftenAsTheTwoModesRun)
{
    ExpectSequence({
        {"1", kHandedOver + kFixUps},
        {"2", kMigrated},
        {"1", {{kAccount16, kGone}, {kDirectIP, kDirectAccount}}},
        {"2", {{kUserIni, NewUser("18000")}, {kDirectIP, kGone}, {kAccount16, kDirectAccount}}},
    });
}

TEST(ModeSequences, AnyOtherWordOnlyComesFirstToTheFixUps)
{
    ExpectSequence({
        {"other", kFixUps},
        {"other", {}},
        {"1", kHandedOver},
        {"other", {}},
        {"2", kMigrated},
        {"other", {}},
        {"all", kNewData + Files{{kWeb, WebWithCopy(kToken, "hello, phone")}}},
        {"other", {}},
    });
}

TEST(ModeSequences, TheOtherModesDoNotDisturbAHandOverThatIsUnderWay)
{
    ExpectSequence({
        {"1", kHandedOver + kFixUps},
        {"dev", kNewData + Files{{kWeb, WebWithCopy("hello, phone", "hello, phone")}}},
        {"pwd", {{kWeb, WebWithCopy(kToken, "hello, phone")}}},
        {"2", kMigrated},
    });
}
