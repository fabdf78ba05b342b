// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The six translators together: their order and their paths on the device, and what each does without memory.

#include "allV4XToV50.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <new>
#include <set>

#include "contactV4XToV50.h"
#include "dialNowV4XToV50.h"
#include "dialPlanV4XToV50.h"
#include "doorPhoneV4XToV50.h"
#include "dssKeyV4XToV50.h"
#include "phoneImage.h"
#include "remoteBookV4XToV50.h"
#include "scratchFolder.h"
#include "trackedNew.h"

namespace
{

constexpr int kNoLimit = -1;
int g_allocationsLeft = kNoLimit;
int g_allocationCount = 0;
std::set<std::string> g_allocatingFolders;

} // namespace

// They take the place of the platform's: after a number of elements there is no memory for another one.
void* operator new(std::size_t size, const char* file, int line) noexcept
{
    ++g_allocationCount;
    g_allocatingFolders.insert(line > 0 ? file : "without a line");
    if (g_allocationsLeft == 0)
        return nullptr;
    if (g_allocationsLeft != kNoLimit)
        --g_allocationsLeft;
    return ::operator new(size, std::nothrow);
}

void operator delete(void* memory, const char* /*file*/, int /*line*/) noexcept
{
    ::operator delete(memory);
}

namespace
{

/// What the six report when no old file is there.
const std::vector<std::string> kReportsWithoutFiles = {
    "chTraceStack: enter ContactV4XToV50",
    "chTraceStack: enter GetV4XContactData",
    "chTraceStack: leave GetV4XContactData",
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
    "chTraceStack: leave RemoteBookV4XToV50",
};

constexpr char kOldContacts[] = "<contactData><group sGroupName='g'><contact sLocalRename='a'/></group></contactData>";
constexpr char kOldPlan[] = "<DialRule><Data Prefix='1'/></DialRule>";
constexpr char kOldRules[] = "<DialNow><Data DialNowRule='1'/></DialNow>";
constexpr char kOldKeys[] = "<DssKey><Item Type='BLF'/></DssKey>";
constexpr char kOldDoorPhones[] = "<DoorPhone><item title='t'/></DoorPhone>";
constexpr char kOldBooks[] = "<RemotePhoneBook><item/><item/><item/><item/></RemotePhoneBook>";

/// A phone with all six old files, on which a run changes nothing but XML data.
void PutOldFiles(PhoneImage& phone)
{
    phone.Put("/config/user/user.ini", "[Feature]\nRingbackTimeout=180\n");
    phone.Put("/config/data/contactData.xml", kOldContacts);
    phone.Put("/config/data/dialplan.xml", kOldPlan);
    phone.Put("/config/data/dialnow.xml", kOldRules);
    phone.Put("/config/data/dsskey.xml", kOldKeys);
    phone.Put("/config/data/doorphonedata.xml", kOldDoorPhones);
    phone.Put("/config/data/remotebook.xml", kOldBooks);
}

void ExpectNewFilesBesideContacts(PhoneImage& phone, const std::string& doorPhoneName)
{
    phone.Expect("/config/data/DialPlan.xml",
                 "<dialRule>\n    <data rule=\"1\" replace=\"\" lines=\"\" />\n</dialRule>\n");
    phone.Expect("/config/data/DialNow.xml", "<dialNow>\n    <data rule=\"1\" lines=\"\" />\n</dialNow>\n");
    phone.Expect("/config/data/memkey.xml",
                 "<dsskey>\n    <item type=\"BLF\">\n        <itemdata line=\"-1\" value=\"\""
                 " label=\"\" extension=\"\" />\n    </item>\n</dsskey>\n");
    phone.Expect("/config/data/doorphonedata.xml",
                 "<DoorPhone>\n    <item id_name=\"" + doorPhoneName +
                     "\" device_model=\"0\" display_name=\"\" phone_number=\"\" unlock_pin=\"\" send_audio=\"1\""
                     " send_video=\"1\" full_screen=\"1\" />\n</DoorPhone>\n");
    phone.Expect("/config/data/remote_phonebook_list.xml",
                 "<root_remote_phonebook>\n    <item />\n    <item />\n    <item />\n    <item />\n"
                 "    <item name=\"\" url=\"\" />\n    <item name=\"\" url=\"\" />\n</root_remote_phonebook>\n");
}

void ExpectNewContacts(PhoneImage& phone)
{
    phone.Expect(
        "/config/data/contact_list.xml",
        "<root_contact>\n    <contact display_name=\"a\" office_number=\"\" mobile_number=\"\" other_number=\"\""
        " line=\"0\" ring=\"\" group_id_name=\"2\" default_photo=\"\" />\n</root_contact>\n");
    phone.Expect("/config/data/contact_group_list.xml",
                 "<root_group>\n    <group id_name=\"0\" display_name=\"All\" ring=\"\" read_only=\"1\" />\n"
                 "    <group id_name=\"2\" display_name=\"g\" ring=\"\" read_only=\"0\" />\n"
                 "    <group id_name=\"1\" display_name=\"Black List\" ring=\"\" read_only=\"1\" />\n</root_group>\n");
}

/// The scopes and data traces of the last run.
std::vector<std::string> TranslatorReports(const PhoneImage& phone)
{
    std::vector<std::string> reports;
    for (const std::string& line : phone.ReportsWithScopes()) {
        if (line.rfind("chTraceStack: ", 0) == 0 || line.rfind("etlTrace 2: ", 0) == 0)
            reports.push_back(line);
    }
    return reports;
}

} // namespace

TEST(XmlDataOfARun, TheSixFollowEachOtherInTheirOrder)
{
    for (const char* mode : {"dev", "all"}) {
        PhoneImage phone;
        phone.Run(mode);
        EXPECT_EQ(TranslatorReports(phone), kReportsWithoutFiles) << mode;
    }
}

TEST(XmlDataOfARun, EveryOldFileBecomesItsNewOne)
{
    PhoneImage phone;
    PutOldFiles(phone);
    phone.Run("dev");
    ExpectNewContacts(phone);
    ExpectNewFilesBesideContacts(phone, "t");
    phone.ExpectNothingElseChanged();

    // Again: only the door phones, which have no old form any more, come out otherwise.
    phone.Run("dev");
    ExpectNewContacts(phone);
    ExpectNewFilesBesideContacts(phone, "");
    phone.ExpectNothingElseChanged();
}

TEST(XmlDataOfARun, OneThatFailsDoesNotStopTheNext)
{
    PhoneImage phone;
    PutOldFiles(phone);
    phone.Put("/config/data/contactData.xml", "<contactData>");
    phone.Run("dev");
    ExpectNewFilesBesideContacts(phone, "t");
    phone.ExpectNothingElseChanged();
}

TEST(XmlDataOfARun, SwitchedOffNoFileIsTouched)
{
    PhoneImage phone;
    PutOldFiles(phone);
    phone.Put("/config/version.ini", "[SyncConfig]\nbEnableFromOld=0\n");
    phone.Run("dev");
    phone.ExpectNothingElseChanged();
    EXPECT_THAT(TranslatorReports(phone), testing::IsEmpty());
}

TEST(XmlDataOfARun, WhateverIsNotZeroSwitchesOn)
{
    for (const char* text : {"[SyncConfig]\nbEnableFromOld=1\n", "[SyncConfig]\nbEnableFromOld=-1\n", "[SyncConfig]\n",
                             "[Sync]\nbEnableFromOld=0\n"}) {
        SCOPED_TRACE(text);
        PhoneImage phone;
        PutOldFiles(phone);
        phone.Put("/config/version.ini", text);
        phone.Run("dev");
        ExpectNewContacts(phone);
        ExpectNewFilesBesideContacts(phone, "t");
        phone.ExpectNothingElseChanged();
    }
}

TEST(XmlDataOfARun, OtherModesTouchNoXmlFile)
{
    for (const char* mode : {"pwd", "1", "2", "Dev"}) {
        SCOPED_TRACE(mode);
        PhoneImage phone;
        PutOldFiles(phone);
        phone.Run(mode);
        for (const char* path :
             {"contactData.xml", "dialplan.xml", "dialnow.xml", "dsskey.xml", "doorphonedata.xml", "remotebook.xml"})
            EXPECT_TRUE(phone.Has(std::string("/config/data/") + path)) << path;
        phone.Expect("/config/data/doorphonedata.xml", kOldDoorPhones);
        EXPECT_FALSE(phone.Has("/config/data/contact_list.xml"));
        EXPECT_THAT(TranslatorReports(phone), testing::Not(testing::Contains(testing::HasSubstr("V4X"))));
    }
}

TEST(AllV4XToV50, RunsTheSixInOrderAndGivesTheLastOnesResult)
{
    if (std::filesystem::exists("/config/data"))
        GTEST_SKIP() << "this machine has a /config/data";
    std::string expected;
    for (const std::string& report : kReportsWithoutFiles)
        expected += report + "\n";
    testing::internal::CaptureStderr();
    EXPECT_EQ(AllV4XToV50(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), expected);
}

TEST(WithoutMemory, AFileWhoseElementCannotBeMadeIsNotSaved)
{
    struct Row {
        const char* name;
        int (*translate)(const char* oldPath, const char* newPath);
        const char* oldText;
        int elementCount; // that are made for the new file
    };
    const Row rows[] = {
        {"dial plan", &DialPlanV4XToV50, kOldPlan, 2},       {"dial-now", &DialNowV4XToV50, kOldRules, 2},
        {"DSS keys", &DSSKeyV4XToV50, kOldKeys, 3},          {"door phones", &DoorPhoneV4XToV50, kOldDoorPhones, 2},
        {"remote books", &RemoteBookV4XToV50, kOldBooks, 2},
    };
    for (const Row& row : rows) {
        for (int made = 0; made <= row.elementCount; ++made) {
            SCOPED_TRACE(std::string(row.name) + ", elements made: " + std::to_string(made));
            const ScratchFolder folder;
            WriteBytes(folder.Path("old.xml"), row.oldText);
            WriteBytes(folder.Path("new.xml"), "before");
            testing::internal::CaptureStderr();
            g_allocationsLeft = made;
            const int result = row.translate(folder.Path("old.xml").c_str(), folder.Path("new.xml").c_str());
            g_allocationsLeft = kNoLimit;
            (void)testing::internal::GetCapturedStderr();
            EXPECT_EQ(result, made == row.elementCount ? 1 : 0);
            EXPECT_EQ(ReadBytes(folder.Path("new.xml")) == "before", made < row.elementCount);
        }
    }
}

TEST(WithoutMemory, AContactListThatIsSavedStays)
{
    constexpr int kContactElements = 2; // the root and a contact
    constexpr int kGroupElements = 4;   // the root and three groups
    for (int made = 0; made <= kContactElements + kGroupElements; ++made) {
        SCOPED_TRACE(made);
        const ScratchFolder folder;
        WriteBytes(folder.Path("old.xml"), kOldContacts);
        WriteBytes(folder.Path("contacts.xml"), "before");
        WriteBytes(folder.Path("groups.xml"), "before");
        testing::internal::CaptureStderr();
        g_allocationsLeft = made;
        const int result = ContactV4XToV50(folder.Path("old.xml").c_str(), folder.Path("contacts.xml").c_str(),
                                           folder.Path("groups.xml").c_str());
        g_allocationsLeft = kNoLimit;
        (void)testing::internal::GetCapturedStderr();
        EXPECT_EQ(result, made == kContactElements + kGroupElements ? 1 : 0);
        EXPECT_EQ(ReadBytes(folder.Path("contacts.xml")) == "before", made < kContactElements);
        EXPECT_EQ(ReadBytes(folder.Path("groups.xml")) == "before", made < kContactElements + kGroupElements);
    }
}

TEST(TrackedAllocation, EveryNewElementIsMadeForTheTranslatorsFolder)
{
    struct Row {
        const char* name;
        int (*translate)(const char* oldPath, const char* newPath);
        const char* oldText;
        int elementCount; // that are made for the new file
    };
    const auto contacts = [](const char* oldPath, const char* newPath) {
        return ContactV4XToV50(oldPath, newPath, (std::string(newPath) + ".groups").c_str());
    };
    const Row rows[] = {
        {"contacts", contacts, kOldContacts, 6},
        {"dial plan", &DialPlanV4XToV50, kOldPlan, 2},
        {"dial-now", &DialNowV4XToV50, kOldRules, 2},
        {"DSS keys", &DSSKeyV4XToV50, kOldKeys, 3},
        {"door phones", &DoorPhoneV4XToV50, kOldDoorPhones, 2},
        {"remote books", &RemoteBookV4XToV50, kOldBooks, 2},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const ScratchFolder folder;
        WriteBytes(folder.Path("old.xml"), row.oldText);
        g_allocationCount = 0;
        g_allocatingFolders.clear();
        testing::internal::CaptureStderr();
        EXPECT_EQ(row.translate(folder.Path("old.xml").c_str(), folder.Path("new.xml").c_str()), 1);
        (void)testing::internal::GetCapturedStderr();
        EXPECT_EQ(g_allocationCount, row.elementCount);
        EXPECT_THAT(g_allocatingFolders, testing::ElementsAre("../../../app/kestrune/xmlTranslator"));
    }
}
