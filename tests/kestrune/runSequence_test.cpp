// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Which passes run in which mode and in which order, and that nothing ends a run before its last pass.

#include "runSequence.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "bundledPlatform.h"
#include "logSocket.h"
#include "operationResult.h"
#include "phoneImage.h"

namespace fs = std::filesystem;

namespace
{

using Lines = std::vector<std::string>;

constexpr char kVersionIni[] = "/config/version.ini";
constexpr char kTable[] = "/phone/resource/kestrune.xml";
constexpr char kFactoryCert[] = "/phone/factory/certs/phoneca/ca.pem";
constexpr char kUserCert[] = "/config/certs/phoneca/ca.pem";
constexpr char kSecret[] = "hello, phone";
const std::string kToken = Enciphered("hello, phone", "NxCtIZlb8N+vWevKAOqtDvzgV0IboWX12AuHSQ");

const Lines kNothing;
const Lines kTablePass = {"app_log 60/4: No config translate record!"};
const Lines kTranslators = {"ContactV4XToV50", "DialPlanV4XToV50",  "DialNowV4XToV50",
                            "DSSKeyV4XToV50",  "DoorPhoneV4XToV50", "RemoteBookV4XToV50"};
const Lines kCertSync = {"app_log 60/6: Sync cert cp /phone/factory/certs/phoneca/ca.pem /config/certs/phoneca/ca.pem"};
const Lines kPasswordPass = {"etlTrace 2: Encrypt:(hello, phone)->(" + kToken + ")"};

Lines operator+(Lines first, const Lines& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/// A phone on which every pass has something to report or to change.
class BusyPhone : public PhoneImage
{
public:
    BusyPhone()
    {
        Put(kUserIni, UserIni(kSecret, ""));
        Put("/config/user/voip/sipAccount0.cfg", "[account]\nCancelTimer=60\n");
        Put("/phone/factory/user/user.ini", "[PhoneSetting]\nEnLock=1\n");
        Put("/phone/resource/encryptconfig.xml", "<l><e file='/config/user/user.ini' section='Web' key='A'/></l>");
        Put(kTable, "<table/>");
        Put(kFactoryCert, "certificate");
        PutFolder("/config/certs/phoneca");
    }

    static std::string UserIni(const std::string& secret, const std::string& timeout)
    {
        return "[PhoneSetting]\nEnLock=0\n[Web]\nA=" + secret + "\n[Feature]\nx=1\n" + timeout;
    }

    void ExpectFixUps()
    {
        Expect("/config/user/voip/sipAccount0.cfg", "[account]\nCancelTimer=60\nSCALineKeyNumber=-1\n");
    }

    /// The reports of the last run that tell which pass ran: all but the traces inside a translator.
    Lines Passes() const
    {
        Lines passes;
        const std::string enter = "chTraceStack: enter ";
        for (const std::string& report : ReportsWithScopes()) {
            const std::string name = report.rfind(enter, 0) == 0 ? report.substr(enter.size()) : "";
            if (std::count(kTranslators.begin(), kTranslators.end(), name) != 0)
                passes.push_back(name);
            else if (report.rfind("app_log ", 0) == 0 || report.find("crypt:(") != std::string::npos)
                passes.push_back(report);
        }
        return passes;
    }

    /// Runs a mode through a shell script in the sandbox, in which "$@" is the program with its argument.
    ProcessResult RunThrough(const std::string& script, const std::string& mode)
    {
        RunWith({}); // remembers the files as they are now
        std::vector<std::string> command = Command({mode});
        const auto program = std::find(command.begin(), command.end(), "--") + 1;
        command.insert(program, {"bash", "-c", script, "bash"});
        return RunProcess(command, Environment());
    }

    /// After a run of mode "all", whatever became of its reports.
    void ExpectAllDone()
    {
        Expect(kUserIni, UserIni(kToken, "RingbackTimeout=60\n"));
        Expect(kUserCert, "certificate");
        ExpectFixUps();
        ExpectNothingElseChanged();
    }
};

} // namespace

TEST(RunSequence, EachModeRunsItsPassesInOrder)
{
    struct Row {
        const char* mode;
        Lines passes;
    };
    const Row rows[] = {
        {"all", kTablePass + kTranslators + kCertSync + kPasswordPass},
        {"dev", kTablePass + kTranslators + kCertSync},
        {"pwd", kPasswordPass},
        {"other", kNothing},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.mode);
        const std::string mode = row.mode;
        BusyPhone phone;
        phone.Run(mode);
        EXPECT_EQ(phone.Passes(), row.passes);
        const bool isEnciphered = mode == "all" || mode == "pwd";
        phone.Expect(kUserIni, BusyPhone::UserIni(isEnciphered ? kToken : kSecret, "RingbackTimeout=60\n"));
        phone.ExpectFixUps();
        if (mode == "all" || mode == "dev")
            phone.Expect(kUserCert, "certificate");
        phone.ExpectNothingElseChanged();
    }
}

TEST(RunSequence, WithoutAModeOnlyTheUsageIsLogged)
{
    BusyPhone phone;
    EXPECT_EQ(phone.RunWith({}).exitStatus, 0);
    EXPECT_EQ(phone.ReportsWithScopes(), (Lines{"app_log 60/6: Usage: ", "#/kestrune [all|dev|pwd]"}));
    EXPECT_THAT(phone.Output(), testing::IsEmpty());
    phone.ExpectNothingElseChanged();
}

TEST(RunSequence, TheUsageNamesTheProgramAsItWasCalled)
{
    for (const char* name : {"kestrune", "./bin/my kestrune", "%s%n%d", ""}) {
        BusyPhone phone;
        phone.RunWith({});
        const ProcessResult result = RunProcess(phone.CommandWithName(name, {}), phone.Environment());
        EXPECT_EQ(result.exitStatus, 0);
        EXPECT_EQ(result.errors, std::string("app_log 60/6: Usage: \n#") + name + " [all|dev|pwd]\n");
        EXPECT_EQ(result.output, "");
        phone.ExpectNothingElseChanged();
    }
}

TEST(RunSequence, WithoutAnyArgumentNotEvenTheProgramsNameIsNeeded)
{
    // A kernel may give an empty name to a program that is started without any.
    if (PhoneImage::IsEmulated())
        GTEST_SKIP() << "the kernel does not start a program for another machine";
    BusyPhone phone;
    phone.RunWith({});
    const ProcessResult result = RunForResult(phone, "StartWithoutArguments");
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_THAT(result.errors, testing::AnyOf("app_log 60/6: Usage: \n# [all|dev|pwd]\n",
                                              "app_log 60/6: Usage: \n#(null) [all|dev|pwd]\n"));
    EXPECT_EQ(result.output, "");
    phone.ExpectNothingElseChanged();
}

TEST(RunSequence, AnArgumentCountBelowTwoIsTheUsageAndNothingElse)
{
    struct Row {
        int count;
        const char* arguments[3];
        const char* printed;
    };
    const Row rows[] =
        {
            {0, {nullptr}, "(null)"},
            {0, {"name", "all", nullptr}, "name"}, // what is beyond the count is not looked at
            {1, {"name", nullptr}, "name"},
            {1, {"name", "all", nullptr}, "name"},
            {-1, {"name", "all", nullptr}, "name"},
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

TEST(RunSequence, AnyOtherWordRunsTheFixUpsAlone)
{
    for (const char* word : {"--help", "-h", "help", "ALL", "All", "all ", " all", "all\n", "allx", "al", "", "Dev",
                             "PWD", "pwd,dev", "0", "3", "01", "12", "%s%n"}) {
        SCOPED_TRACE(word);
        BusyPhone phone;
        phone.Run(word);
        EXPECT_THAT(phone.ReportsWithScopes(), testing::IsEmpty());
        EXPECT_THAT(phone.Output(), testing::IsEmpty());
        phone.Expect(kUserIni, BusyPhone::UserIni(kSecret, "RingbackTimeout=60\n"));
        phone.ExpectFixUps();
        phone.ExpectNothingElseChanged();
    }
}

TEST(RunSequence, ModesOneAndTwoBeginWithTheFixUps)
{
    for (const char* mode : {"1", "2"}) {
        BusyPhone phone;
        phone.Run(mode);
        EXPECT_EQ(phone.Get("/config/user/voip/sipAccount0.cfg"), "[account]\nCancelTimer=60\nSCALineKeyNumber=-1\n");
        EXPECT_NE(phone.Get(kUserIni).find("[Feature]\nx=1\nRingbackTimeout=60\n"), std::string::npos);
        EXPECT_FALSE(phone.Has(kUserCert));
    }
}

TEST(RunSequence, ArgumentsBehindTheModeAreIgnored)
{
    BusyPhone all;
    EXPECT_EQ(all.RunWith({"all", "pwd", "--help", ""}).exitStatus, 0);
    EXPECT_EQ(all.Passes(), kTablePass + kTranslators + kCertSync + kPasswordPass);

    BusyPhone other;
    EXPECT_EQ(other.RunWith({"--help", "all"}).exitStatus, 0);
    EXPECT_THAT(other.Passes(), testing::IsEmpty());
}

TEST(RunSequence, TheXmlTranslationsRunUnlessTheyAreSwitchedOff)
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
        for (const std::string mode : {"all", "dev"}) {
            BusyPhone phone;
            if (row.versionIni != nullptr)
                phone.Put(kVersionIni, row.versionIni);
            phone.Run(mode);
            EXPECT_EQ(phone.Passes(), kTablePass + (row.isEnabled ? kTranslators : kNothing) + kCertSync +
                                          (mode == "all" ? kPasswordPass : kNothing));
        }
    }
}

TEST(RunSequence, SwitchedOffTranslationsTouchNoXmlFile)
{
    PhoneImage phone;
    phone.PutExamplePhone();
    phone.Put(kVersionIni, "[SyncConfig]\nbEnableFromOld=0\n");
    phone.Run("all");
    for (const char* made : {"contact_list.xml", "contact_group_list.xml", "DialPlan.xml", "DialNow.xml", "memkey.xml",
                             "remote_phonebook_list.xml"})
        EXPECT_FALSE(phone.Has(std::string("/config/data/") + made)) << made;
    PhoneImage before;
    before.PutExamplePhone();
    EXPECT_EQ(phone.Get("/config/data/doorphonedata.xml"), before.Get("/config/data/doorphonedata.xml"));
}

TEST(RunSequence, TheSwitchIsReadAfterTheTablePass)
{
    BusyPhone phone;
    phone.Put(kVersionIni, "[SyncConfig]\nbEnableFromOld=1\n[Off]\nbEnableFromOld=0\n");
    phone.Put(kTable,
              "<t><r srcFile='/config/version.ini' srcSec='Off' srcKey='bEnableFromOld' dstSec='SyncConfig'/></t>");
    phone.Run("dev");
    EXPECT_EQ(phone.Passes(), kCertSync);
}

TEST(RunSequence, TheTablePassSeesWhatTheFixUpsWrote)
{
    BusyPhone phone;
    phone.Put(kTable,
              "<t><r srcFile='/config/user/user.ini' srcSec='Feature' srcKey='RingbackTimeout' dstKey='Copy'/></t>");
    phone.Run("dev");
    EXPECT_EQ(phone.Get(kUserIni), BusyPhone::UserIni(kSecret, "RingbackTimeout=60\nCopy=60\n"));
}

TEST(RunSequence, AFailingPassDoesNotStopTheNext)
{
    BusyPhone phone;
    phone.Put(kTable, "<t><r srcFile='/config/missing.ini' srcSec='S' srcKey='K'/></t>");
    phone.PutFolder("/config/data/contactData.xml");
    phone.Put("/config/data/dialplan.xml", "no XML");
    phone.Put("/phone/factory/certs/phoneca/folder/file", "");
    phone.Run("all");
    EXPECT_THAT(phone.Output(), testing::Contains("Can's load user's inifile!"));
    EXPECT_THAT(phone.Passes(), testing::IsSupersetOf(kTranslators + kCertSync + kPasswordPass));
    phone.Expect(kUserIni, BusyPhone::UserIni(kToken, "RingbackTimeout=60\n"));
}

TEST(RunSequence, OnAnEmptyPhoneNothingIsWritten)
{
    for (const char* mode : {"all", "dev", "pwd", "other"}) {
        PhoneImage phone;
        phone.Run(mode);
        phone.ExpectNothingElseChanged();
    }
}

TEST(RunSequence, ReportsThatGoNowhereChangeNothing)
{
    const char* scripts[] = {
        "exec \"$@\" >&-",
        "exec \"$@\" 2>&-",
        "exec \"$@\" <&- >&- 2>&-",
        "exec \"$@\" >/dev/full",
        "exec \"$@\" 2>/dev/full",
        "exec \"$@\" >/dev/full 2>&1",
        // A pipe whose reader has gone before the first line is written.
        "exec 3> >(exec true); wait $!; exec \"$@\" >&3",
        "exec 3> >(exec true); wait $!; exec \"$@\" >&3 2>&3",
    };
    for (const char* script : scripts) {
        SCOPED_TRACE(script);
        BusyPhone phone;
        EXPECT_EQ(phone.RunThrough(script, "all").exitStatus, 0);
        phone.ExpectAllDone();
    }
}

TEST(RunSequence, LongOutputIntoAPipeWithoutReaderChangesNothing)
{
    BusyPhone phone;
    std::string records;
    for (int number = 0; number < 2000; ++number)
        records += "<r srcFile='/config/user/user.ini' srcSec='Web' srcKey='A'/>";
    phone.Put(kTable, "<t>" + records + "</t>");
    EXPECT_EQ(phone.RunThrough("exec 3> >(exec true); wait $!; exec \"$@\" >&3", "all").exitStatus, 0);
    phone.ExpectAllDone();
}

TEST(RunSequence, RunningOutOfMemoryEndsThePassThatMetItAlone)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer itself needs more address space than the test leaves";
#endif
    if (PhoneImage::IsEmulated())
        GTEST_SKIP() << "the emulator itself needs more address space than the test leaves";
    constexpr char kLarge[] = "/config/user/voip/sipAccount16.cfg";
    BusyPhone phone;
    phone.RunWith({});
    phone.Put(kLarge, "");
    fs::resize_file(phone.HostPath(kLarge), std::uintmax_t{4} << 20); // the largest file that is read at all
    std::vector<std::string> command = phone.Command({"all"});
    const auto program = std::find(command.begin(), command.end(), "--") + 1;
    command.insert(program, {"bash", "-c", "ulimit -d 3000; exec \"$@\"", "bash"}); // KiB for data
    EXPECT_EQ(RunProcess(command, phone.Environment()).exitStatus, 0);
    phone.Remove(kLarge);

    // The first fix-up met the large file first and got no further; all passes after it ran.
    phone.Expect(kUserIni, BusyPhone::UserIni(kToken, "RingbackTimeout=60\n"));
    phone.Expect(kUserCert, "certificate");
    phone.ExpectNothingElseChanged();
}

TEST(RunSequence, TheApplicationLogReachesTheSystemLogAndTracesNeverDo)
{
    const ScratchFolder folder;
    const LogSocket log(folder.Path("log"));
    BusyPhone phone;
    phone.AddSandboxOptions({"--bind", folder.Path("log"), "/dev/log"});
    phone.Run("all");
    EXPECT_THAT(phone.Reports(), testing::IsSupersetOf(kPasswordPass));
    EXPECT_THAT(log.Messages(), testing::ElementsAre("<12>kestrune: No config translate record!\n",
                                                     "<14>kestrune: Sync cert cp /phone/factory/certs/phoneca/ca.pem "
                                                     "/config/certs/phoneca/ca.pem\n",
                                                     "<12>kestrune: no cipher key /phone/factory/certs/pwcipher.key: "
                                                     "passwords are not protected"));

    phone.RunWith({});
    EXPECT_THAT(log.Messages(), testing::ElementsAre("<14>kestrune: Usage: \n#/kestrune [all|dev|pwd]\n"));
}

TEST(RunSequence, WithoutStandardErrorTracesDoNotEndInTheSystemLog)
{
    // The connection to the system log would get the number of standard error, and the secrets would follow it.
    const ScratchFolder folder;
    const LogSocket log(folder.Path("log"));
    BusyPhone phone;
    phone.AddSandboxOptions({"--bind", folder.Path("log"), "/dev/log"});
    EXPECT_EQ(phone.RunThrough("exec \"$@\" 2>&-", "all").exitStatus, 0);
    phone.ExpectAllDone();
    EXPECT_THAT(log.Messages(),
                testing::ElementsAre(testing::HasSubstr("Usage"), testing::HasSubstr("No config translate"),
                                     testing::HasSubstr("Sync cert"), testing::HasSubstr("no cipher key")));
}
