// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "table/forgottenKeys.h"

#include <gmock/gmock.h>

#include "oneFilePhone.h"

namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kUser[] = "/config/user/user.ini";
constexpr char kFactory[] = "/phone/factory/user/user.ini";
constexpr char kAccount3[] = "/config/user/voip/sipAccount3.cfg";
constexpr char kAccount9[] = "/config/user/voip/sipAccount9.cfg";
constexpr char kFactoryAccount16[] = "/phone/factory/user/voip/sipAccount16.cfg";

using Files = std::map<std::string, std::string>;

Snapshot PhoneOf(const Files& files)
{
    Snapshot phone;
    for (const auto& [path, content] : files)
        phone.merge(PhoneWith(path, content));
    return phone;
}

TableRecord Record(const std::string& file, const std::string& sourceKey, const std::string& key)
{
    return {file, "A", sourceKey, file, "A", key};
}

/// The forgotten keys as texts, with "*" after one with a value of its own.
std::vector<std::string> Forgotten(const Files& files, PhoneLists lists = {}, const std::optional<Files>& old = {})
{
    lists.records.push_back(Record(kUser, "source", "destination"));
    std::vector<std::string> texts;
    for (const ForgottenKey& key :
         FindForgottenKeys(PhoneOf(files), PhoneOf(old.value_or(files)), lists, FileFormats(lists)))
        texts.push_back(key.file + " " + key.section + " " + key.key + (key.isOwn ? "*" : ""));
    return texts;
}

TEST(ForgottenKeys, WhatRecordsAndEntriesName)
{
    EXPECT_THAT(Forgotten({{kUser, "[A]\nsource=1\ndestination=1\nother=1\n[B]\nsource=1\n"}}),
                ElementsAre("/config/user/user.ini A other*", "/config/user/user.ini B source*"));
    const PhoneLists lists = {{{kUser, "A", "listed", "", false, false}, {"", "A", "password", "", true, true}}, {}};
    EXPECT_THAT(Forgotten({{kUser, "[A]\nlisted=1\npassword=1\n"}, {kAccount9, "[A]\npassword=1\nlisted=1\n"}}, lists),
                ElementsAre("/config/user/user.ini A password*", "/config/user/voip/sipAccount*.cfg A listed*"));
}

TEST(ForgottenKeys, ARecordKnowsItsOwnFileOnly)
{
    PhoneLists lists;
    lists.records = {Record("/config//user/voip/sipAccount3.cfg", "a", "b")};
    EXPECT_THAT(Forgotten({{kAccount3, "[A]\na=1\nb=1\n"}}, lists), IsEmpty());
    EXPECT_THAT(Forgotten({{kAccount9, "[A]\na=1\n"}}, lists), ElementsAre("/config/user/voip/sipAccount*.cfg A a*"));
}

TEST(ForgottenKeys, WhatPassesUse)
{
    EXPECT_THAT(
        Forgotten(
            {{kUser, "[PhoneSetting]\nEnLock=1\n[Sync]\nSyncCfgByVersion=0\n[Feature]\nRingbackTimeout=1\n"
                     "[Backlight]\nnBacklightTime=1\n[Features]\nBLFLedOffIdle=0\nBLfNotifyType=0\nClosePowerLight=0\n"
                     "PowerLedIdle&Talk=0\nPowerLedMail=0\n[BLFLed]\nBLFLedMode=0\n[PowerLed]\nPowerLed_Common=0\n"
                     "PowerLed_Ring=0\nPowerLed_Mail=0\nPowerLed_Mute=0\nPowerLed_HoldHeld=0\nPowerLed_TalkDial=0\n"},
             {"/config/system/system.ini", "[Syslog]\neLogType=1\nstrServerName=a\nLogType=0\nSyslogServer=a\n"},
             {"/config/version.ini", "[SyncConfig]\nbEnableFromOld=1\n"},
             {kAccount9, "[account]\ndirectip=0\nSCALineKeyNumber=-1\nCancelTimer=9\n"
                         "[CallCenter]\nbEnableQueueStatusLight=0\n"}}),
        IsEmpty());
}

TEST(ForgottenKeys, WhatTheNewFactoryFilesContain)
{
    const Files files = {{kUser, "[A]\na=1\nb=1\n"},
                         {kFactory, "[A]\na=\n"},
                         {"/config/system/system.ini", "[A]\na=1\nb=1\n"},
                         {"/phone/factory/system/system.ini", "[A]\nb=\n"},
                         {kAccount3, "[A]\na=1\nb=1\n"},
                         {kFactoryAccount16, "[A]\na=?1\n"}};
    EXPECT_THAT(Forgotten(files, {}, Files()),
                ElementsAre("/config/system/system.ini A a*", "/config/user/user.ini A b*",
                            "/config/user/voip/sipAccount*.cfg A b*"));
}

TEST(ForgottenKeys, AValueOfTheOldFactoryIsNotOwn)
{
    const Files files = {{kUser, "[A]\nsame=1\nsame=2\nother=1\nnone=1\n"}, {kAccount3, "[A]\na=0\nb=?0\n"}};
    const Files old = {{kFactory, "[A]\nsame=1\nother=2\n"}, {kFactoryAccount16, "[A]\na=?0\nb=?0\n"}};
    EXPECT_THAT(Forgotten(files, {}, old),
                ElementsAre("/config/user/user.ini A none*", "/config/user/user.ini A other*",
                            "/config/user/user.ini A same", "/config/user/voip/sipAccount*.cfg A a",
                            "/config/user/voip/sipAccount*.cfg A b*"));
}

TEST(ForgottenKeys, AllAccountsAreOnePlace)
{
    const Files old = {{kFactoryAccount16, "[A]\na=0\n"}};
    EXPECT_THAT(Forgotten({{kAccount3, "[A]\na=0\n"}, {kAccount9, "[A]\na=0\n"}}, {}, old),
                ElementsAre("/config/user/voip/sipAccount*.cfg A a"));
    EXPECT_THAT(Forgotten({{kAccount3, "[A]\na=1\n"}, {kAccount9, "[A]\na=0\n"}}, {}, old),
                ElementsAre("/config/user/voip/sipAccount*.cfg A a*"));
}

TEST(ForgottenKeys, OnlyConfigurationFilesThatTheListsOrPassesUse)
{
    const std::string text = "[A]\na=1\n";
    PhoneLists lists;
    lists.records = {Record("/config/own.ini", "b", "c"), Record("/phone/own.ini", "b", "c")};
    EXPECT_THAT(Forgotten({{"/config/own.ini", text},
                           {"/config/other.ini", text},
                           {"/phone/own.ini", text},
                           {"/config/kestrune-handover", text},
                           {"/config/user/voip/directip.cfg", text},
                           {"/config/data/dialplan.xml", text},
                           {"/config/version.ini", text + '\0'}},
                          lists),
                ElementsAre("/config/own.ini A a*"));
}

TEST(ForgottenKeys, WithoutATableNothingIsForgotten)
{
    EXPECT_THAT(FindForgottenKeys(PhoneWith(kUser, "[A]\na=1\n"), {}, PhoneLists(), FileFormats(PhoneLists())),
                IsEmpty());
}

} // namespace
