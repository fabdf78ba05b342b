// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Runs as one step, as far as an undisturbed run shows it: the upgrade's marker, the hand-over copy, runs at the same
// time, and changes that cannot be committed. The effects of power cuts are proven in tests/fault.

#include "runCommit.h"

#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bundledPlatform.h"
#include "logSocket.h"
#include "phoneImage.h"

namespace fs = std::filesystem;

namespace
{

constexpr char kFactoryIni[] = "/phone/factory/user/user.ini";
constexpr char kHandOver[] = "/tmp/VersionInfo.cfg";
constexpr char kHandOverCopy[] = "/config/kestrune-handover";
constexpr char kAccount7[] = "/config/user/voip/sipAccount7.cfg";
constexpr char kDirectIP[] = "/config/user/voip/directip.cfg";
constexpr char kHandedOver[] = "[Features]\nBLFLedOffIdle=1\nBLfNotifyType=0\nClosePowerLight=\nPowerLedIdle&Talk=\n"
                               "PowerLedMail=\n\n[Syslog]\neLogType=\nstrServerName=\n";
constexpr char kOldUserIni[] = "[Features]\nBLFLedOffIdle=1\nBLfNotifyType=0\n[Backlight]\nnBacklightTime=5\n";
constexpr char kFixUp[] = "\n[Feature]\nRingbackTimeout=180\n";

/// A phone on which every mode has something to do.
class UpgradedPhone : public PhoneImage
{
public:
    UpgradedPhone()
    {
        Put(kUserIni, kOldUserIni);
        Put(kFactoryIni, "[Sync]\nSyncCfgByVersion=1\n");
    }

    explicit UpgradedPhone(const std::string& words) : UpgradedPhone() { Put(kUpgradeMarker, words); }

    void ExpectNoMarker() { ExpectMissing(kUpgradeMarker); }
};

class RunCommit : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!KESTRUNE_HAS_BUNDLED_PLATFORM)
            GTEST_SKIP() << "what the bundled library does";
    }
};

} // namespace

TEST_F(RunCommit, AModeTakesItsLineOffTheMarker)
{
    UpgradedPhone phone("1\n2\nall\n");
    phone.Run("1");
    phone.Expect(kUpgradeMarker, "2\nall\n");
    phone.Expect(kUserIni, std::string(kOldUserIni) + kFixUp);
    phone.Expect(kHandOver, kHandedOver);
    phone.Expect(kHandOverCopy, kHandedOver);
    phone.ExpectNothingElseChanged();
}

TEST_F(RunCommit, AModeWhoseTurnItIsNotDoesNothing)
{
    UpgradedPhone phone("2\nall\n");
    for (const char* mode : {"1", "all", "dev", "pwd", "unknown", "2\nall", ""}) {
        phone.Run(mode);
        phone.ExpectNothingElseChanged();
        EXPECT_THAT(phone.ReportsWithScopes(), testing::IsEmpty()) << mode;
        EXPECT_THAT(phone.Output(), testing::IsEmpty()) << mode;
    }
}

TEST_F(RunCommit, EachModeRunsOnceAndTheLastOneRemovesTheMarker)
{
    UpgradedPhone phone("1\n2\nall\n");
    for (int boot = 0; boot < 2; ++boot) {
        for (const char* mode : {"1", "2", "all"}) {
            if (phone.Has(kUpgradeMarker))
                phone.Run(mode);
        }
        phone.ExpectNoMarker();
        EXPECT_NE(phone.Get(kUserIni).find("nBacklightTime=300\n"), std::string::npos) << "minutes became seconds once";
    }
}

TEST_F(RunCommit, WordsInAnotherOrderTakeTheirTurnsOverSeveralStarts)
{
    UpgradedPhone phone("all\n2\n1");
    const char* left[] = {"2\n1", "1", ""};
    for (const char* words : left) {
        for (const char* mode : {"1", "2", "all"}) {
            if (phone.Has(kUpgradeMarker))
                phone.Run(mode);
        }
        if (*words != '\0')
            phone.Expect(kUpgradeMarker, words);
        else
            phone.ExpectNoMarker();
    }
}

TEST_F(RunCommit, AWordOfAnyModeTakesItsTurn)
{
    UpgradedPhone phone("fix-ups\npwd\n");
    phone.Run("fix-ups");
    phone.Expect(kUpgradeMarker, "pwd\n");
    phone.Expect(kUserIni, std::string(kOldUserIni) + kFixUp);
    phone.ExpectNothingElseChanged();
    phone.Run("pwd");
    phone.ExpectNoMarker();
    phone.ExpectNothingElseChanged();
}

TEST_F(RunCommit, AnEmptyMarkerIsRemovedAndNothingElseHappens)
{
    for (const char* words : {"", "\n"}) {
        UpgradedPhone phone(words);
        phone.Run("all");
        phone.ExpectNoMarker();
        phone.ExpectNothingElseChanged();
    }
}

TEST_F(RunCommit, AMarkerThatCannotBeReadListsNothing)
{
    UpgradedPhone large(std::string("all\n") + std::string(4 << 20, '\n'));
    large.Run("all");
    large.ExpectNothingElseChanged();

    UpgradedPhone folder;
    folder.PutFolder(kUpgradeMarker);
    folder.Run("all");
    folder.ExpectNothingElseChanged();

    UpgradedPhone link;
    link.Put("/config/words", "all\n");
    fs::create_symlink("words", link.HostPath(kUpgradeMarker));
    link.Run("all");
    link.ExpectNothingElseChanged();

    UpgradedPhone pipe;
    ASSERT_EQ(mkfifo(pipe.HostPath(kUpgradeMarker).c_str(), 0600), 0);
    pipe.Run("all");
    pipe.ExpectNothingElseChanged();
}

TEST_F(RunCommit, TheMarkerKeepsItsPermissionBits)
{
    UpgradedPhone phone("1\n2\n");
    fs::permissions(phone.HostPath(kUpgradeMarker), fs::perms(0600));
    phone.Run("1");
    EXPECT_EQ(fs::status(phone.HostPath(kUpgradeMarker)).permissions(), fs::perms(0600));
}

TEST_F(RunCommit, WithoutAModeWordTheMarkerIsNotLookedAt)
{
    UpgradedPhone phone("");
    phone.RunWith({});
    phone.ExpectNothingElseChanged();
}

TEST_F(RunCommit, WithoutTheMarkerAModeRunsAsOftenAsItIsCalled)
{
    UpgradedPhone phone;
    phone.Run("1");
    phone.Run("2");
    phone.Run("2");
    EXPECT_NE(phone.Get(kUserIni).find("nBacklightTime=18000\n"), std::string::npos);
    EXPECT_FALSE(phone.Has(kHandOverCopy));
}

TEST_F(RunCommit, TheHandOverSurvivesAnEmptyTemporaryFolder)
{
    UpgradedPhone undisturbed("1\n2\n");
    undisturbed.Run("1");
    undisturbed.Run("2");
    undisturbed.ExpectMissing(kHandOverCopy);
    undisturbed.ExpectNoMarker();

    UpgradedPhone phone("1\n2\n");
    phone.Run("1");
    phone.Remove(kHandOver);
    phone.Run("2");
    phone.Expect(kUserIni, undisturbed.Get(kUserIni));
    phone.Expect(kHandOver, kHandedOver);
    phone.ExpectMissing(kHandOverCopy);
    phone.ExpectNoMarker();
    phone.ExpectNothingElseChanged();
}

TEST_F(RunCommit, AModeOneThatHandsNothingOverRemovesTheCopyOfAnEarlierUpgrade)
{
    UpgradedPhone phone("1\n");
    phone.Put(kFactoryIni, "");
    phone.Put(kHandOver, kHandedOver);
    phone.Put(kHandOverCopy, kHandedOver);
    phone.Run("1");
    phone.ExpectMissing(kHandOverCopy);
    phone.ExpectNoMarker();
    phone.Expect(kUserIni, std::string(kOldUserIni) + kFixUp);
    phone.ExpectNothingElseChanged();
}

TEST_F(RunCommit, AHandOverFileThatEndsAsItBeganIsCopiedToo)
{
    UpgradedPhone phone("1\n");
    phone.Put(kHandOver, kHandedOver);
    phone.Run("1");
    phone.Expect(kHandOverCopy, kHandedOver);
}

TEST_F(RunCommit, ACopyThatCannotBeReadIsNoHandOver)
{
    UpgradedPhone phone("2\n");
    phone.PutFolder(std::string(kHandOverCopy) + "/inner");
    phone.Run("2");
    phone.Expect(kUserIni, std::string(kOldUserIni) + kFixUp);
    phone.ExpectNoMarker();
    phone.ExpectNothingElseChanged();
}

TEST_F(RunCommit, ARunWaitsForTheOneBeforeIt)
{
    UpgradedPhone phone;
    const pid_t other = fork();
    if (other == 0) {
        const int folder = open(phone.HostPath("/config").c_str(), O_RDONLY | O_DIRECTORY);
        if (folder == -1 || flock(folder, LOCK_EX) != 0)
            _exit(1);
        (void)usleep(700'000);
        WriteBytes(phone.HostPath(kUserIni), "[Feature]\nlast=1\n"); // its last save, which drops what came too early
        _exit(0);
    }
    (void)usleep(200'000);
    phone.Run("pwd");
    int status = -1;
    ASSERT_EQ(waitpid(other, &status, 0), other);
    ASSERT_EQ(status, 0);
    phone.Expect(kUserIni, "[Feature]\nlast=1\nRingbackTimeout=180\n");
}

TEST_F(RunCommit, WhatCannotBeCommittedIsToldToTheSystemLogAlone)
{
    UpgradedPhone phone;
    const ScratchFolder folder;
    const LogSocket log(folder.Path("log"));
    phone.AddSandboxOptions({"--bind", folder.Path("log"), "/dev/log"});
    phone.PutFolder(std::string(kUserIni) + ".kestrune-new/inner");
    phone.Put(kAccount7, "[account]\n");
    phone.RunWith({"fix-ups"});
    phone.Expect(kAccount7, "[account]\nSCALineKeyNumber=-1\n");
    phone.ExpectNothingElseChanged();
    EXPECT_THAT(log.Messages(), testing::ElementsAre("<12>kestrune: cannot save /config/user/user.ini: Is a directory",
                                                     "<12>kestrune: another mode: 1 file changed, 1 not saved"));
    EXPECT_THAT(phone.ReportsWithScopes(), testing::IsEmpty());
}

TEST_F(RunCommit, AMovedAccountKeepsTheAttributesOfACopy)
{
    UpgradedPhone phone;
    phone.Put(kAccount7, "[account]\nSCALineKeyNumber=1\ndirectip=1\n");
    fs::permissions(phone.HostPath(kAccount7), fs::perms(0600));
    phone.Run("1");
    phone.Expect(kDirectIP, "[account]\nSCALineKeyNumber=1\ndirectip=1\n");
    phone.ExpectMissing(kAccount7);
    EXPECT_EQ(fs::status(phone.HostPath(kDirectIP)).permissions(), fs::perms(0600));
}

TEST_F(RunCommit, AnAccountThatADirectIPLinkLeadsToIsNotLost)
{
    UpgradedPhone phone;
    phone.Put(kAccount7, "[account]\nSCALineKeyNumber=1\ndirectip=1\n");
    fs::create_symlink("sipAccount7.cfg", phone.HostPath(kDirectIP));
    phone.Run("1");
    phone.ExpectMissing(kAccount7);
    phone.Expect(kDirectIP, "[account]\nSCALineKeyNumber=1\ndirectip=1\n");
    EXPECT_FALSE(fs::is_symlink(phone.HostPath(kDirectIP)));
}

TEST_F(RunCommit, ACertificateThatComesOutShortIsTakenBack)
{
    UpgradedPhone phone;
    phone.Put("/phone/factory/certs/phoneca/a.pem", std::string(1 << 20, 'a'));
    phone.Put("/phone/factory/certs/phoneca/b.pem", "short");
    phone.PutFolder("/config/certs/phoneca");
    const std::string limited = "ulimit -f 100; exec \"$0\" dev"; // blocks of 512 or 1,024 bytes
    auto command = phone.Command({"-c", limited, "/kestrune"}, "sh");
    if (PhoneImage::IsEmulated())
        GTEST_SKIP() << "the shell would run under the emulator";
    const ProcessResult result = RunProcess(command, phone.Environment());
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_FALSE(phone.Has("/config/certs/phoneca/a.pem"));
    EXPECT_EQ(phone.Get("/config/certs/phoneca/b.pem"), "short");
    phone.Run("dev");
    phone.Expect("/config/certs/phoneca/a.pem", std::string(1 << 20, 'a'));
}
