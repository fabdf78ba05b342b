// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The operations that the app library offers to other programs of the device. They work on the device's fixed paths, so a
// small program runs them in the sandbox. No mode calls them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>

#include "doorPhoneV4XToV50.h"
#include "phoneImage.h"
#include "untouchedFiles.h"

namespace
{

/// Runs one operation on the phone.
ProcessResult RunOperation(PhoneImage& phone, const std::string& operation)
{
    phone.AddSandboxOptions({"--ro-bind", KESTRUNE_UNUSED_OPERATIONS, "/unused-operations"});
    ProcessResult result = RunProcess(phone.Command({operation}, "/unused-operations"), phone.Environment());
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    return result;
}

/// A root element in the way in which the XML library saves it, with one line for each child element.
std::string Root(const std::string& name, const std::vector<std::string>& children)
{
    std::string text = "<" + name + ">\n";
    for (const std::string& child : children)
        text += "    <" + child + " />\n";
    return text + "</" + name + ">\n";
}

void PutOldData(PhoneImage& phone)
{
    phone.Put("/config/data/contactData.xml",
              "<contactData><group sGroupName=\"Sales\"><contact sLocalRename=\"Ann\" "
              "sOfficeNumber=\"201\" sImagePath=\"/rundata/a.png\"/></group></contactData>");
    phone.Put("/config/data/dialplan.xml", "<DialRule><Data Prefix=\"9\" Replace=\"00\" Account=\"1\"/></DialRule>");
    phone.Put("/config/data/dialnow.xml", "<DialNow><Data DialNowRule=\"1xx\" Account=\"2\"/></DialNow>");
    phone.Put("/config/data/dsskey.xml", "<DssKey><Item Type=\"N/A\"/></DssKey>");
    phone.Put("/config/data/doorphonedata.xml",
              "<DoorPhone><item title=\"Gate\"><DeviceModel>2N</DeviceModel></item></DoorPhone>");
    phone.Put("/config/data/remotebook.xml", "<RemotePhoneBook/>");
}

void ExpectNewData(PhoneImage& phone)
{
    phone.Expect("/config/data/contact_list.xml",
                 Root("root_contact", {"contact display_name=\"Ann\" office_number=\"201\" mobile_number=\"\" "
                                       "other_number=\"\" line=\"0\" ring=\"\" group_id_name=\"2\" "
                                       "default_photo=\"/data/a.png\""}));
    phone.Expect("/config/data/contact_group_list.xml",
                 Root("root_group", {"group id_name=\"0\" display_name=\"All\" ring=\"\" read_only=\"1\"",
                                     "group id_name=\"2\" display_name=\"Sales\" ring=\"\" read_only=\"0\"",
                                     "group id_name=\"1\" display_name=\"Black List\" ring=\"\" read_only=\"1\""}));
    phone.Expect("/config/data/DialPlan.xml", Root("dialRule", {"data rule=\"9\" replace=\"00\" lines=\"1\""}));
    phone.Expect("/config/data/DialNow.xml", Root("dialNow", {"data rule=\"1xx\" lines=\"2\""}));
    phone.Expect("/config/data/memkey.xml", Root("dsskey", {"item type=\"N/A\""}));
    phone.Expect("/config/data/doorphonedata.xml",
                 Root("DoorPhone", {"item id_name=\"Gate\" device_model=\"1\" display_name=\"\" phone_number=\"\" "
                                    "unlock_pin=\"\" send_audio=\"1\" send_video=\"1\" full_screen=\"1\""}));
    phone.Expect("/config/data/remote_phonebook_list.xml",
                 Root("root_remote_phonebook", std::vector<std::string>(6, "item name=\"\" url=\"\"")));
}

/// The outermost scopes of a run's reports, in their order.
std::vector<std::string> OuterScopes(const std::string& errors)
{
    std::vector<std::string> names;
    std::istringstream stream(errors);
    int depth = 0;
    for (std::string line; std::getline(stream, line);) {
        if (line.rfind("chTraceStack: enter ", 0) == 0 && depth++ == 0)
            names.push_back(line.substr(20));
        else if (line.rfind("chTraceStack: leave ", 0) == 0)
            --depth;
    }
    return names;
}

} // namespace

TEST(BacklightMinutesToSecondsIfSmall, ValuesUpToFiftyNineAreMultiplied)
{
    struct Row {
        const char* before;
        const char* after; // null: not even saved
    };
    const Row rows[] = {
        {"5", "300"},
        {"1", "60"},
        {"59", "3540"},
        {"60", nullptr},
        {"61", nullptr},
        {"300", nullptr},
        {"2147483647", nullptr},
        {"99999999999", nullptr},
        {"0", "0"},
        {"-1", "-60"},
        {"-35791394", "-2147483640"},
        {"-35791395", "-2147483648"},
        {"-2147483648", "-2147483648"},
        {"-99999999999", "-2147483648"},
        {"", "0"},
        {"soon", "0"},
        {"0x10", "0"},
        {"+7", "420"},
        {"7 minutes", "420"},
        {"007", "420"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.before);
        PhoneImage phone;
        const std::string text = "[Feature]\nn=1\n[Backlight]\nnBacklightTime=";
        phone.Put(kUserIni, text + row.before + "\nkeep=1\n");
        const UntouchedFiles files(phone, {kUserIni});
        RunOperation(phone, "BacklightMinutesToSecondsIfSmall");
        if (row.after == nullptr)
            files.Check();
        else
            phone.Expect(kUserIni, text + row.after + "\nkeep=1\n");
    }
}

TEST(BacklightMinutesToSecondsIfSmall, AnAbsentTimeCountsAsOneMinute)
{
    for (const char* before : {"", "[Backlight]\n"}) {
        PhoneImage phone;
        phone.Put(kUserIni, before);
        RunOperation(phone, "BacklightMinutesToSecondsIfSmall");
        phone.Expect(kUserIni, "[Backlight]\nnBacklightTime=60\n");
    }
    PhoneImage phone;
    phone.PutFolder("/config/user");
    RunOperation(phone, "BacklightMinutesToSecondsIfSmall");
    phone.Expect(kUserIni, "[Backlight]\nnBacklightTime=60\n");
}

TEST(BacklightMinutesToSecondsIfSmall, WhatCannotBeReadOrMadeIsLeft)
{
    PhoneImage phone;
    RunOperation(phone, "BacklightMinutesToSecondsIfSmall"); // no folder to write to
    phone.ExpectMissing(kUserIni);
    phone.PutFolder(kUserIni);
    RunOperation(phone, "BacklightMinutesToSecondsIfSmall");
    EXPECT_TRUE(phone.Has(kUserIni));
}

TEST(BacklightMinutesToSecondsIfSmall, NoModeCallsIt)
{
    // Mode "2" multiplies whatever is there; no other mode multiplies at all.
    for (const char* mode : {"all", "dev", "pwd", "1", "2", "other"}) {
        SCOPED_TRACE(mode);
        PhoneImage phone;
        phone.Put(kUserIni, "[Feature]\nRingbackTimeout=1\n[Backlight]\nnBacklightTime=5\n");
        phone.Run(mode);
        phone.ExpectNothingElseChanged();
    }
    PhoneImage phone;
    phone.Put("/tmp/VersionInfo.cfg", "");
    phone.Put(kUserIni, "[Feature]\nRingbackTimeout=1\n[Backlight]\nnBacklightTime=60\n");
    phone.Run("2");
    phone.Expect(kUserIni, "[Feature]\nRingbackTimeout=1\n[Backlight]\nnBacklightTime=3600\n");
    phone.ExpectNothingElseChanged();
}

TEST(AllV4XToV50, TranslatesAllSixWithoutAskingTheVersionFile)
{
    for (const char* version : {"[SyncConfig]\nbEnableFromOld=0\n", "[SyncConfig]\nbEnableFromOld=1\n"}) {
        PhoneImage phone;
        phone.Put("/config/version.ini", version);
        phone.Put(kUserIni, "");
        PutOldData(phone);
        const UntouchedFiles others(phone, {kUserIni, "/config/version.ini", "/config/data/contactData.xml",
                                            "/config/data/dialplan.xml", "/config/data/dialnow.xml",
                                            "/config/data/dsskey.xml", "/config/data/remotebook.xml"});
        const ProcessResult result = RunOperation(phone, "AllV4XToV50");
        EXPECT_EQ(result.output, "1\n");
        EXPECT_THAT(OuterScopes(result.errors),
                    testing::ElementsAre("ContactV4XToV50", "DialPlanV4XToV50", "DialNowV4XToV50", "DSSKeyV4XToV50",
                                         "DoorPhoneV4XToV50", "RemoteBookV4XToV50"));
        ExpectNewData(phone);
        others.Check();
    }
}

TEST(AllV4XToV50, TheResultIsThatOfTheRemotePhoneBooksAlone)
{
    PhoneImage without;
    PutOldData(without);
    without.Remove("/config/data/remotebook.xml");
    EXPECT_EQ(RunOperation(without, "AllV4XToV50").output, "0\n");
    EXPECT_TRUE(without.Has("/config/data/memkey.xml"));

    PhoneImage only;
    only.Put("/config/data/remotebook.xml", "<RemotePhoneBook/>");
    EXPECT_EQ(RunOperation(only, "AllV4XToV50").output, "1\n");
    EXPECT_TRUE(only.Has("/config/data/remote_phonebook_list.xml"));
    EXPECT_FALSE(only.Has("/config/data/memkey.xml"));
}

TEST(AllV4XToV50, NoModeCallsIt)
{
    // With the version file's switch off, it alone would translate.
    for (const char* mode : {"all", "dev", "pwd", "1", "2", "other"}) {
        SCOPED_TRACE(mode);
        PhoneImage phone;
        phone.Put("/config/version.ini", "[SyncConfig]\nbEnableFromOld=0\n");
        phone.Put(kUserIni, "[Feature]\nRingbackTimeout=1\n");
        PutOldData(phone);
        const ProcessResult& result = phone.Run(mode);
        EXPECT_THAT(OuterScopes(result.errors), testing::IsEmpty());
        phone.ExpectNothingElseChanged();
    }
}

TEST(GetDoorPhoneModelIndex, TheNumberIsThePlaceInTheTableAndZeroForAnyOtherName)
{
    struct Row {
        const char* name;
        int number;
    };
    const Row rows[] = {
        {nullptr, 0},  {"Mobotix", 0}, {"2N", 1},      {"Linkcom", 2}, {"Custom", 3}, {"", 0},
        {"2n", 0},     {"custom", 0},  {"LINKCOM", 0}, {" 2N", 0},     {"2N ", 0},    {"2N\n", 0},
        {"Linkco", 0}, {"Custom2", 0}, {"1", 0},       {"3", 0},       {"Other", 0},  {"2N\t", 0},
    };
    for (const Row& row : rows)
        EXPECT_EQ(GetDoorPhoneModelIndex(row.name), row.number) << (row.name == nullptr ? "null" : row.name);
}
