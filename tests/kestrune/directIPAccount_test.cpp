// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Mode "1" takes the direct-IP account out of the numbered accounts; mode "2" makes it account 16.

#include "directIPAccount.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "bundledPlatform.h"
#include "phoneImage.h"
#include "scratchFolder.h"
#include "untouchedFiles.h"

namespace
{

constexpr char kDirectIP[] = "/config/user/voip/directip.cfg";
constexpr char kAccount16[] = "/config/user/voip/sipAccount16.cfg";
constexpr char kFactoryAccount[] = "/phone/factory/user/voip/sipAccount16.cfg";

/// An account file that the start-up fix-ups do not change.
std::string AccountText(const std::string& name, const std::string& keys = "")
{
    return "; " + name + "\n[account]\nSCALineKeyNumber=4\nLabel=" + name + "\n" + keys;
}

/// A phone whose user.ini is complete, so that only accounts can change.
void PutUser(PhoneImage& phone)
{
    phone.Put("/config/user/user.ini", "[Feature]\nRingbackTimeout=90\n");
    phone.PutFolder("/config/user/voip");
}

/// @return whether the file's owner could be changed to this user
bool Give(const PhoneImage& phone, const std::string& path, uid_t owner, mode_t mode)
{
    const std::string hostPath = phone.HostPath(path);
    return chown(hostPath.c_str(), owner, owner) == 0 && chmod(hostPath.c_str(), mode) == 0;
}

void ExpectOwnerAndMode(const PhoneImage& phone, const std::string& path, uid_t owner, mode_t mode)
{
    struct stat status = {};
    EXPECT_EQ(stat(phone.HostPath(path).c_str(), &status), 0) << path;
    EXPECT_EQ(status.st_uid, owner) << path;
    EXPECT_EQ(status.st_gid, owner) << path;
    EXPECT_EQ(status.st_mode & 07777, mode) << path;
}

unsigned Mode(const PhoneImage& phone, const std::string& path)
{
    struct stat status = {};
    EXPECT_EQ(stat(phone.HostPath(path).c_str(), &status), 0) << path;
    return status.st_mode & 07777u;
}

/// A phone with an older direct-IP account, and account 8 with these lines after its own.
void PutAccount8(PhoneImage& phone, const std::string& lines)
{
    PutUser(phone);
    phone.Put(kDirectIP, "[account]\nLabel=older\n");
    phone.Put(Account(8), AccountText("eight", lines));
}

} // namespace

TEST(ExtractDirectIPAccount, TheHighestMarkedAccountIsKeptAndEveryMarkedOneRemoved)
{
    PhoneImage phone;
    PutUser(phone);
    phone.Put(Account(3), AccountText("three", "directip=1\n"));
    phone.Put(Account(7), AccountText("seven", "directip=1\n"));
    phone.Put(Account(5), AccountText("five"));
    phone.Put(Account(16), AccountText("sixteen", "directip=0\n"));
    const UntouchedFiles others(phone, {Account(5), Account(16)});
    phone.Run("1");
    phone.Expect(kDirectIP, AccountText("seven", "directip=1\n"));
    phone.ExpectMissing(Account(3));
    phone.ExpectMissing(Account(7));
    phone.ExpectNothingElseChanged();
    others.Check();
    EXPECT_THAT(phone.Reports(), testing::IsEmpty());
}

TEST(ExtractDirectIPAccount, AllSeventeenAccountsAreVisitedFromTheTopAndNoOther)
{
    PhoneImage phone;
    PutUser(phone);
    for (int number = 0; number <= 17; ++number)
        phone.Put(Account(number), AccountText(std::to_string(number), "directip=1\n"));
    phone.Run("1");
    phone.Expect(kDirectIP, AccountText("16", "directip=1\n"));
    for (int number = 0; number <= 16; ++number)
        phone.ExpectMissing(Account(number));
    phone.ExpectNothingElseChanged();
}

TEST(ExtractDirectIPAccount, TheFirstAndTheLastNumberAloneAreFound)
{
    for (int number : {0, 16}) {
        PhoneImage phone;
        PutUser(phone);
        phone.Put(Account(number), AccountText("only", "directip=1\n"));
        phone.Run("1");
        phone.Expect(kDirectIP, AccountText("only", "directip=1\n"));
        phone.ExpectMissing(Account(number));
        phone.ExpectNothingElseChanged();
    }
}

TEST(ExtractDirectIPAccount, TheNumberOneMarksAnAccount)
{
    for (const char* lines : {"directip=1\n", "directip = 1\r\n", "directip=+1\n", "directip=01\n", "directip=1 yes\n",
                              "directip=1", "directip=1\ndirectip=0\n"}) {
        SCOPED_TRACE(lines);
        PhoneImage phone;
        PutAccount8(phone, lines);
        phone.Run("1");
        phone.Expect(kDirectIP, AccountText("eight", lines));
        phone.ExpectMissing(Account(8));
        phone.ExpectNothingElseChanged();
    }
}

TEST(ExtractDirectIPAccount, NoOtherValueMarksAnAccount)
{
    for (const char* lines :
         {"directip=0\ndirectip=1\n", "directip=0\n", "directip=2\n", "directip=-1\n", "directip=11\n", "directip=\n",
          "directip=yes\n", "directip=?1\n", "directip=\"1\"\n", "directip=0x1\n", "directip=2147483647\n",
          "directip=-2147483648\n", "directip=99999999999\n", "directip=4294967297\n",
          "directip=18446744073709551617\n", "DirectIP=1\n", ";directip=1\n", "[Account]\ndirectip=1\n", ""}) {
        SCOPED_TRACE(lines);
        PhoneImage phone;
        PutAccount8(phone, lines);
        phone.Run("1");
        phone.ExpectNothingElseChanged();
    }
}

TEST(ExtractDirectIPAccount, TheStartUpFixUpsHaveRunOnTheCopy)
{
    PhoneImage phone;
    PutUser(phone);
    phone.Put(Account(2), "[account]\ndirectip=1\n");
    phone.Run("1");
    phone.Expect(kDirectIP, "[account]\ndirectip=1\nSCALineKeyNumber=-1\n");
    phone.ExpectMissing(Account(2));
    phone.ExpectNothingElseChanged();
}

TEST(ExtractDirectIPAccount, ASecondRunKeepsWhatTheFirstOneTook)
{
    PhoneImage phone;
    PutUser(phone);
    phone.Put(Account(7), AccountText("seven", "directip=1\n"));
    phone.Run("1");
    const UntouchedFiles kept(phone, {kDirectIP});
    phone.Run("1");
    phone.ExpectNothingElseChanged();
    kept.Check();
}

TEST(ExtractDirectIPAccount, TheCopyTakesThePermissionsOfTheAccountUnlessTheFileWasThere)
{
    PhoneImage phone;
    PutUser(phone);
    phone.Put(Account(7), AccountText("seven", "directip=1\n"));
    chmod(phone.HostPath(Account(7)).c_str(), 0640);
    phone.Run("1");
    EXPECT_EQ(Mode(phone, kDirectIP), 0640u);

    phone.Put(Account(7), AccountText("seven again", "directip=1\n"));
    chmod(phone.HostPath(kDirectIP).c_str(), 0600);
    phone.Run("1");
    EXPECT_EQ(Mode(phone, kDirectIP), 0600u);
    phone.Expect(kDirectIP, AccountText("seven again", "directip=1\n"));
}

TEST(ExtractDirectIPAccount, AMarkedAccountGoesEvenWhenItsCopyFails)
{
    PhoneImage phone;
    PutUser(phone);
    phone.PutFolder(kDirectIP);
    phone.Put(Account(7), AccountText("seven", "directip=1\n"));
    phone.Put(Account(8), AccountText("eight"));
    phone.Run("1");
    phone.ExpectMissing(Account(7));
    phone.ExpectNothingElseChanged();
}

TEST(ExtractDirectIPAccount, AnAccountThatIsNoFileIsNotMarked)
{
    PhoneImage phone;
    PutUser(phone);
    phone.PutFolder(Account(9));
    ASSERT_EQ(mkfifo(phone.HostPath(Account(10)).c_str(), 0600), 0);
    std::filesystem::create_symlink("nowhere.cfg", phone.HostPath(Account(11)));
    phone.Put(Account(7), AccountText("seven", "directip=1\n"));
    phone.Run("1");
    phone.Expect(kDirectIP, AccountText("seven", "directip=1\n"));
    phone.ExpectMissing(Account(7));
    phone.ExpectNothingElseChanged();
}

TEST(RestoreDirectIPAccount, TheDirectIPFileBecomesAccount16AndTheFactoryFileIsNotConsulted)
{
    PhoneImage phone;
    PutUser(phone);
    const std::string text = AccountText("seven", "directip=1\nValue=?0\n");
    phone.Put(kDirectIP, text);
    phone.Put(kAccount16, AccountText("spare"));
    phone.Put(kFactoryAccount, "[account]\nLabel=?factory\n");
    phone.Put(Account(15), AccountText("fifteen"));
    const UntouchedFiles others(phone, {kFactoryAccount, Account(15)});
    phone.Run("2");
    phone.Expect(kAccount16, text); // the "?" stays: it is a mark only in the factory's file
    phone.ExpectMissing(kDirectIP);
    phone.ExpectNothingElseChanged();
    others.Check();
    EXPECT_THAT(phone.Reports(), testing::IsEmpty());
}

TEST(RestoreDirectIPAccount, AnEmptyDirectIPFileCountsToo)
{
    PhoneImage phone;
    PutUser(phone);
    phone.Put(kDirectIP, "");
    phone.Put(kFactoryAccount, "[account]\nLabel=?factory\n");
    phone.Run("2");
    phone.Expect(kAccount16, "");
    phone.ExpectMissing(kDirectIP);
    phone.ExpectNothingElseChanged();
}

TEST(RestoreDirectIPAccount, WithoutADirectIPFileTheFactoryAccountIsTakenWithoutItsMarks)
{
    for (const bool isSpareThere : {false, true}) {
        PhoneImage phone;
        PutUser(phone);
        phone.Put(kFactoryAccount, "[account]\nEnable=?0\nMask=a?b\n");
        if (isSpareThere)
            phone.Put(kAccount16, AccountText("spare"));
        const UntouchedFiles factory(phone, {kFactoryAccount});
        phone.Run("2");
        phone.Expect(kAccount16, "[account]\nEnable=0\nMask=a?b\n");
        phone.ExpectNothingElseChanged();
        factory.Check();
    }
}

TEST(RestoreDirectIPAccount, WithNeitherFileAccount16IsNotTouched)
{
    PhoneImage phone;
    PutUser(phone);
    phone.Put(kAccount16, AccountText("spare", "Value=?0\n"));
    const UntouchedFiles account(phone, {kAccount16});
    phone.Run("2");
    phone.ExpectNothingElseChanged();
    account.Check();

    PhoneImage empty;
    PutUser(empty);
    empty.Run("2");
    empty.ExpectNothingElseChanged();
}

TEST(RestoreDirectIPAccount, ASecondRunPutsTheFactoryAccountInItsPlace)
{
    PhoneImage phone;
    PutUser(phone);
    phone.Put(kDirectIP, AccountText("seven"));
    phone.Put(kFactoryAccount, "[account]\nSCALineKeyNumber=2\nLabel=?factory\n");
    phone.Run("2");
    phone.Expect(kAccount16, AccountText("seven"));
    phone.Run("2");
    phone.Expect(kAccount16, "[account]\nSCALineKeyNumber=2\nLabel=factory\n");
    phone.ExpectNothingElseChanged();
}

TEST(RestoreDirectIPAccount, Account16KeepsItsPermissionsLessWhatItsSourceWithholdsAndANewOneTakesItsSources)
{
    PhoneImage phone;
    PutUser(phone);
    phone.Put(kDirectIP, AccountText("seven"));
    chmod(phone.HostPath(kDirectIP).c_str(), 0604);
    phone.Run("2");
    EXPECT_EQ(Mode(phone, kAccount16), 0604u);

    phone.Put(kDirectIP, AccountText("eight"));
    chmod(phone.HostPath(kDirectIP).c_str(), 0660);
    chmod(phone.HostPath(kAccount16).c_str(), 0620);
    phone.Run("2");
    EXPECT_EQ(Mode(phone, kAccount16), 0620u);
    phone.Expect(kAccount16, AccountText("eight"));

    phone.Put(kDirectIP, AccountText("nine"));
    chmod(phone.HostPath(kDirectIP).c_str(), 0600);
    phone.Run("2");
    EXPECT_EQ(Mode(phone, kAccount16), 0600u);
    phone.Expect(kAccount16, AccountText("nine"));
}

TEST(RestoreDirectIPAccount, TheDirectIPFileGoesEvenWhenItsCopyFails)
{
    PhoneImage phone;
    PutUser(phone);
    ASSERT_EQ(mkfifo(phone.HostPath(kDirectIP).c_str(), 0600), 0);
    phone.Put(kAccount16, AccountText("spare"));
    phone.Put(kFactoryAccount, "[account]\nLabel=?factory\n");
    phone.Run("2");
    phone.ExpectMissing(kDirectIP);
    phone.ExpectNothingElseChanged();
}

TEST(RestoreDirectIPAccount, AnAccount16ThatCannotBeReplacedStays)
{
    PhoneImage phone;
    PutUser(phone);
    phone.PutFolder(kAccount16);
    phone.Put(kFactoryAccount, "[account]\nLabel=?factory\n");
    phone.Run("2");
    phone.ExpectNothingElseChanged();
}

TEST(DirectIPAccountStripValueMarks, OneLeadingMarkGoesFromEveryValue)
{
    struct Row {
        const char* before;
        const char* after;
    };
    const Row rows[] = {
        {"[a]\nk=?0\n", "[a]\nk=0\n"},
        {"[a]\nk=a?b\n", "[a]\nk=a?b\n"},
        {"[a]\nk=??x\n", "[a]\nk=?x\n"},
        {"[a]\nk=?\n", "[a]\nk=\n"},
        {"[a]\nk=\n", "[a]\nk=\n"},
        {"[a]\nk=x?\n", "[a]\nk=x?\n"},
        {"[a]\nk=\"?x\"\n", "[a]\nk=\"?x\"\n"},
        {"[a]\n k = \t?x \r\n", "[a]\n k = \tx \r\n"},
        {"[a]\nk=? x\n", "[a]\nk= x\n"},
        {"[a]\nk=?=?\n", "[a]\nk==?\n"},
        {"[a]\nk=?x", "[a]\nk=x"},
        {"[a]\n?k=?x\n", "[a]\n?k=x\n"},
        {"[?a]\nk=?1\n[b]\nk=?2\nk=?3\n[?a]\nk=?4\n", "[?a]\nk=1\n[b]\nk=2\nk=3\n[?a]\nk=4\n"},
        {"k=?1\n[a]\n;k=?2\n#k=?3\n?4\n=?5\n", "k=?1\n[a]\n;k=?2\n#k=?3\n?4\n=?5\n"},
        {"\xEF\xBB\xBF[a]\nk=?x\n", "\xEF\xBB\xBF[a]\nk=x\n"},
        {"[a]\nk=?\xff\xfe\n", "[a]\nk=\xff\xfe\n"},
        {"", ""},
        {"no section\n", "no section\n"},
    };
    const ScratchFolder folder;
    const std::string path = folder.Path("account.cfg");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.before);
        WriteBytes(path, row.before);
        EXPECT_TRUE(StripValueMarks(path.c_str()));
        EXPECT_EQ(ReadBytes(path), row.after);
    }
}

TEST(DirectIPAccountStripValueMarks, TheFileIsSavedWhetherOrNotAnythingChanged)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("account.cfg");
    WriteBytes(path, "[a]\nk=0\n");
    const timespec times[2] = {{1000000000, 0}, {1000000000, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    EXPECT_TRUE(StripValueMarks(path.c_str()));
    struct stat status = {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_GT(status.st_mtim.tv_sec, 1000000000);
    EXPECT_EQ(ReadBytes(path), "[a]\nk=0\n");
}

TEST(DirectIPAccountStripValueMarks, WhatIsMissingOrNoFileIsNotSaved)
{
    const ScratchFolder folder;
    EXPECT_FALSE(StripValueMarks(/*path=*/nullptr));
    EXPECT_FALSE(StripValueMarks(folder.Path("missing.cfg").c_str()));
    EXPECT_FALSE(std::filesystem::exists(folder.Path("missing.cfg")));
    EXPECT_FALSE(StripValueMarks(folder.Path().c_str()));
}

TEST(DirectIPAccount, AnAccountOfTheTelephonysUserIsStillItsOwnAfterBothModes)
{
    if (!kHasBundledPlatform)
        GTEST_SKIP() << "rests on what the bundled library keeps";
    PhoneImage phone;
    PutUser(phone);
    phone.Put(Account(4), AccountText("four", "directip=1\n"));
    if (!Give(phone, Account(4), 1000, 0600))
        GTEST_SKIP() << "only root can give a file to another user";
    phone.Run("1");
    ExpectOwnerAndMode(phone, kDirectIP, 1000, 0600);
    phone.Run("2");
    EXPECT_EQ(phone.Get(kAccount16), AccountText("four", "directip=1\n"));
    ExpectOwnerAndMode(phone, kAccount16, 1000, 0600);
}

TEST(DirectIPAccount, TheSecretOfAPrivateAccountIsNotLeftInAFileThatEverybodyReads)
{
    if (!kHasBundledPlatform)
        GTEST_SKIP() << "rests on what the bundled library keeps";
    PhoneImage phone;
    PutUser(phone);
    phone.Put(Account(4), AccountText("four", "directip=1\n"));
    phone.Put(kDirectIP, "[account]\nLabel=older\n");
    ASSERT_EQ(chmod(phone.HostPath(Account(4)).c_str(), 0600), 0);
    ASSERT_EQ(chmod(phone.HostPath(kDirectIP).c_str(), 0644), 0);
    phone.Run("1");
    EXPECT_EQ(phone.Get(kDirectIP), AccountText("four", "directip=1\n"));
    EXPECT_EQ(Mode(phone, kDirectIP), 0600u);
}
