// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The six translators together: their order and their paths on the device, and their behaviour without memory.

#include "allV4XToV50.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <new>
#include <set>
#include <sstream>

#include "contactV4XToV50.h"
#include "dialNowV4XToV50.h"
#include "dialPlanV4XToV50.h"
#include "doorPhoneV4XToV50.h"
#include "dssKeyV4XToV50.h"
#include "operationResult.h"
#include "phoneImage.h"
#include "remoteBookV4XToV50.h"
#include "scratchFolder.h"
#include "trackedNew.h"
#include "untouchedFiles.h"

namespace
{

constexpr int kNoLimit = -1;
int g_allocationsLeft = kNoLimit;
int g_allocationCount = 0;
std::set<std::string> g_allocatingFolders;

} // namespace

// They replace those of the platform: after a number of elements there is no memory for another one.
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

/// The reports of the six if there is no old file.
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

/// A root element as the XML library saves it, with one line for each child element.
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
        const ProcessResult result = RunForResult(phone, "AllV4XToV50");
        EXPECT_THAT(ResultOf(result), testing::StartsWith("result 1\n"));
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
    EXPECT_THAT(ResultOf(RunForResult(without, "AllV4XToV50")), testing::StartsWith("result 0\n"));
    EXPECT_TRUE(without.Has("/config/data/memkey.xml"));

    PhoneImage only;
    only.Put("/config/data/remotebook.xml", "<RemotePhoneBook/>");
    EXPECT_THAT(ResultOf(RunForResult(only, "AllV4XToV50")), testing::StartsWith("result 1\n"));
    EXPECT_TRUE(only.Has("/config/data/remote_phonebook_list.xml"));
    EXPECT_FALSE(only.Has("/config/data/memkey.xml"));
}

TEST(AllV4XToV50, NoModeCallsIt)
{
    // If the switch of the version file is off, only this operation would translate.
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

TEST(AllV4XToV50WithoutMemory, AFileWhoseElementCannotBeMadeIsNotSaved)
{
    struct Row {
        const char* name;
        int (*translate)(const char* oldPath, const char* newPath);
        const char* oldText;
        int elementCount; // number of elements in the new file
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

TEST(AllV4XToV50WithoutMemory, AContactListThatIsSavedStays)
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

TEST(AllV4XToV50TrackedAllocation, EveryNewElementIsMadeForTheTranslatorsFolder)
{
    struct Row {
        const char* name;
        int (*translate)(const char* oldPath, const char* newPath);
        const char* oldText;
        int elementCount; // number of elements in the new file
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
