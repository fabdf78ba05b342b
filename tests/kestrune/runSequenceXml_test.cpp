// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The XML translations of a run: the results for all six old files, and the switch that disables the translations.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "phoneImage.h"

namespace
{

/// A phone with all six old files, on which a run changes only XML data.
void PutOldFiles(PhoneImage& phone)
{
    phone.Put("/config/user/user.ini", "[Feature]\nRingbackTimeout=180\n");
    phone.Put("/config/data/contactData.xml",
              "<contactData><group sGroupName='g'><contact sLocalRename='a'/></group></contactData>");
    phone.Put("/config/data/dialplan.xml", "<DialRule><Data Prefix='1'/></DialRule>");
    phone.Put("/config/data/dialnow.xml", "<DialNow><Data DialNowRule='1'/></DialNow>");
    phone.Put("/config/data/dsskey.xml", "<DssKey><Item Type='BLF'/></DssKey>");
    phone.Put("/config/data/doorphonedata.xml", "<DoorPhone><item title='t'/></DoorPhone>");
    phone.Put("/config/data/remotebook.xml", "<RemotePhoneBook><item/><item/><item/><item/></RemotePhoneBook>");
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

} // namespace

TEST(RunSequenceXml, EveryOldFileBecomesItsNewOne)
{
    PhoneImage phone;
    PutOldFiles(phone);
    phone.Run("dev");
    ExpectNewContacts(phone);
    ExpectNewFilesBesideContacts(phone, "t");
    phone.ExpectNothingElseChanged();

    // A second run: only the result for the door phones, whose old form is gone, differs.
    phone.Run("dev");
    ExpectNewContacts(phone);
    ExpectNewFilesBesideContacts(phone, "");
    phone.ExpectNothingElseChanged();
}

TEST(RunSequenceXml, OneThatFailsDoesNotStopTheNext)
{
    PhoneImage phone;
    PutOldFiles(phone);
    phone.Put("/config/data/contactData.xml", "<contactData>");
    phone.Run("dev");
    ExpectNewFilesBesideContacts(phone, "t");
    phone.ExpectNothingElseChanged();
}

TEST(RunSequenceXml, TheTranslationsRunUnlessTheyAreSwitchedOff)
{
    struct Row {
        const char* versionIni; // null: no such file
        bool isEnabled;
    };
    const Row rows[] = {
        {nullptr, true},
        {"", true},
        {"[SyncConfig]\n", true},
        {"[Other]\nbEnableFromOld=0\n", true},
        {"[SyncConfig]\nBEnableFromOld=0\n", true},
        {"[SyncConfig]\nbEnableFromOld=1\n", true},
        {"[SyncConfig]\nbEnableFromOld=2\n", true},
        {"[SyncConfig]\nbEnableFromOld=-1\n", true},
        {"[SyncConfig]\nbEnableFromOld=99999999999\n", true},
        {"[SyncConfig]\nbEnableFromOld=0\n", false},
        {"[SyncConfig]\nbEnableFromOld=000\n", false},
        {"[SyncConfig]\nbEnableFromOld=\n", false},
        {"[SyncConfig]\nbEnableFromOld=yes\n", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.versionIni == nullptr ? "no file" : row.versionIni);
        for (const char* mode : {"all", "dev"}) {
            PhoneImage phone;
            PutOldFiles(phone);
            if (row.versionIni != nullptr)
                phone.Put("/config/version.ini", row.versionIni);
            phone.Run(mode);
            if (row.isEnabled) {
                ExpectNewContacts(phone);
                ExpectNewFilesBesideContacts(phone, "t");
            } else
                EXPECT_THAT(phone.ReportsWithScopes(), testing::Not(testing::Contains(testing::HasSubstr("V4X"))));
            phone.ExpectNothingElseChanged();
        }
    }
}
