// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The line in the system log that says what became of a run.

#include <filesystem>
#include <gmock/gmock.h>

#include "commitRecord.h"
#include "contentSum.h"
#include "logSocket.h"
#include "phoneImage.h"
#include "runCommit.h"

namespace
{

constexpr char kTable[] = "/phone/resource/kestrune.xml";
constexpr char kDone[] = "[Feature]\nRingbackTimeout=120\n"; // the fix-ups change nothing in it

/// A phone that nothing changes, with a system log.
class LoggedPhone : public PhoneImage
{
public:
    LoggedPhone() : log_(folder_.Path("log"))
    {
        AddSandboxOptions({"--bind", folder_.Path("log"), "/dev/log"});
        Put(kUserIni, kDone);
        Put("/phone/factory/user/user.ini", "");
        Put("/phone/resource/encryptconfig.xml", "<l/>");
        PutTable("");
    }

    /// Adds records to one that changes nothing.
    void PutTable(const std::string& records)
    {
        Put(kTable,
            "<t><r srcFile='/config/user/user.ini' srcSec='Feature' srcKey='RingbackTimeout'/>" + records + "</t>");
    }

    /// Puts the record of a run that was interrupted before it changed user.ini.
    void PutInterrupted(const std::string& mode)
    {
        const std::string content = std::string(kDone) + "[A]\n";
        CommitRecord record;
        record.mode = mode;
        record.changes.push_back({ChangeKind::Rename, kUserIni, SumOf(content), ""});
        Put(std::string(kUserIni) + ".kestrune-new", content);
        Put(kCommitRecord, TextOf(record));
        std::filesystem::permissions(HostPath(kCommitRecord), std::filesystem::perms(0600));
    }

    /// @return the last message of the system log
    std::string EndOf(const std::string& mode)
    {
        RunWith({mode});
        const std::vector<std::string> messages = log_.Messages();
        return messages.empty() ? std::string() : messages.back();
    }

private:
    ScratchFolder folder_;
    LogSocket log_;
};

} // namespace

TEST(RunEnd, ARunThatChangesNothing)
{
    LoggedPhone phone;
    for (const char* mode : {"all", "dev", "pwd"})
        EXPECT_EQ(phone.EndOf(mode), std::string("<14>kestrune: mode ") + mode + ": nothing to do");
    EXPECT_THAT(phone.Reports(), testing::Not(testing::Contains(testing::HasSubstr("nothing to do"))));
    EXPECT_THAT(phone.Output(), testing::Not(testing::Contains(testing::HasSubstr("nothing to do"))));
}

TEST(RunEnd, ChangedFilesAreCountedOnce)
{
    LoggedPhone phone;
    phone.Put(kUserIni, "");
    phone.PutTable("<r srcFile='/config/user/user.ini' srcSec='Feature' srcKey='RingbackTimeout' dstKey='b'/>");
    EXPECT_EQ(phone.EndOf("all"), "<14>kestrune: mode all: 1 file changed");
    phone.Put("/config/user/voip/sipAccount3.cfg", "[account]\n");
    phone.Put(kUserIni, "");
    EXPECT_EQ(phone.EndOf("pwd"), "<14>kestrune: mode pwd: 2 files changed");
}

TEST(RunEnd, CopiedCertificatesCount)
{
    LoggedPhone phone;
    phone.Put("/phone/factory/certs/phoneca/a.pem", "a");
    phone.PutFolder("/config/certs/phoneca");
    EXPECT_EQ(phone.EndOf("dev"), "<14>kestrune: mode dev: 1 file changed");
    EXPECT_EQ(phone.EndOf("dev"), "<14>kestrune: mode dev: nothing to do");
}

TEST(RunEnd, AReadOnlyFolderIsAWarning)
{
    LoggedPhone phone;
    phone.Put(kUserIni, "");
    phone.AddSandboxOptions({"--ro-bind", phone.HostPath("/config"), "/config"});
    EXPECT_EQ(phone.EndOf("pwd"), "<12>kestrune: mode pwd: 0 files changed, 1 not saved");
}

TEST(RunEnd, AnAccountThatCannotBeMovedIsNoChange)
{
    LoggedPhone phone;
    phone.Put("/config/user/voip/sipAccount7.cfg", "[account]\nSCALineKeyNumber=1\ndirectip=1\n");
    phone.PutFolder("/config/user/voip/directip.cfg.kestrune-new/inner"); // the commit fails
    EXPECT_EQ(phone.EndOf("1"), "<12>kestrune: mode 1: 0 files changed, 1 not saved");
    phone.Remove("/config/user/voip/directip.cfg.kestrune-new");
    phone.PutFolder("/config/user/voip/directip.cfg"); // the copy fails visibly
    EXPECT_EQ(phone.EndOf("1"), "<12>kestrune: mode 1: 1 file changed, 1 not saved");
}

TEST(RunEnd, PassesThatEndEarlyAreNamed)
{
    LoggedPhone phone;
    phone.PutTable("<r srcFile='/config/none.ini' srcSec='a' srcKey='b'/>");
    EXPECT_EQ(phone.EndOf("dev"), "<12>kestrune: mode dev: nothing to do; ended early: translation table");
    phone.Put("/config/data/contactData.xml", "<contactData");
    phone.Put("/config/data/dialplan.xml", "<Other/>");
    EXPECT_EQ(phone.EndOf("dev"),
              "<12>kestrune: mode dev: nothing to do; ended early: translation table, contacts, dial plan");
}

TEST(RunEnd, APasswordPassWithoutItsFilesEndsEarly)
{
    LoggedPhone phone;
    phone.Remove("/phone/factory/user/user.ini");
    EXPECT_EQ(phone.EndOf("pwd"), "<12>kestrune: mode pwd: nothing to do; ended early: passwords");
}

TEST(RunEnd, OldFilesThatDoNotExistAreNoEarlyEnd)
{
    LoggedPhone phone;
    EXPECT_EQ(phone.EndOf("dev"), "<14>kestrune: mode dev: nothing to do");
}

TEST(RunEnd, AModeThatTheMarkerDoesNotListFirst)
{
    LoggedPhone phone;
    phone.Put(kUpgradeMarker, "1\n2\n");
    EXPECT_EQ(phone.EndOf("2"), "<14>kestrune: mode 2: not its turn");
    EXPECT_EQ(phone.EndOf("1"), "<14>kestrune: mode 1: nothing to do");
    EXPECT_EQ(phone.EndOf("1"), "<14>kestrune: mode 1: not its turn");
}

TEST(RunEnd, ARunThatFinishesAnEarlierOne)
{
    LoggedPhone phone;
    phone.PutInterrupted("all");
    EXPECT_EQ(phone.EndOf("all"), "<14>kestrune: mode all: finished an earlier run");
    phone.Put(kUserIni, "");
    phone.PutInterrupted("dev");
    EXPECT_EQ(phone.EndOf("pwd"), "<14>kestrune: mode pwd: finished an earlier run; nothing to do");
    phone.Put(kUpgradeMarker, "2\n");
    phone.PutInterrupted("1");
    EXPECT_EQ(phone.EndOf("1"), "<14>kestrune: mode 1: finished an earlier run");
}

TEST(RunEnd, AnyOtherWordIsNotRepeated)
{
    LoggedPhone phone;
    for (const char* word : {"strPassword=plover", "\x1b[2J", "a b", "fix-ups", "aVeryLongWord"})
        EXPECT_EQ(phone.EndOf(word), "<14>kestrune: another mode: nothing to do");
}

TEST(RunEnd, ValuesAreNotInIt)
{
    LoggedPhone phone;
    phone.PutTable("<r srcFile='/config/user/user.ini' srcSec='A' srcKey='strPassword' dstKey='b'/>"
                   "<r srcFile='/config/plover.ini' srcSec='A' srcKey='a'/>");
    phone.Put(kUserIni, "[A]\nstrPassword=heron\n");
    EXPECT_EQ(phone.EndOf("all"), "<12>kestrune: mode all: 1 file changed; ended early: translation table");
}
