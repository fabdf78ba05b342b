// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// A run without a mode reports its usage; otherwise neither lost reports nor a failing pass end a run before its last
// pass.

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "bundledPlatform.h"
#include "logSocket.h"
#include "operationResult.h"
#include "phoneImage.h"

namespace fs = std::filesystem;

namespace
{

using Lines = std::vector<std::string>;

constexpr char kTable[] = "/phone/resource/kestrune.xml";
constexpr char kFactoryCert[] = "/phone/factory/certs/phoneca/ca.pem";
constexpr char kUserCert[] = "/config/certs/phoneca/ca.pem";
constexpr char kSecret[] = "hello, phone";
const std::string kToken = Enciphered("hello, phone", "NxCtIZlb8N+vWevKAOqtDvzgV0IboWX12AuHSQ");

/// The reports that show that the translators, the certificate sync and the password pass have begun.
const Lines kPasses = {"chTraceStack: enter ContactV4XToV50",
                       "chTraceStack: enter DialPlanV4XToV50",
                       "chTraceStack: enter DialNowV4XToV50",
                       "chTraceStack: enter DSSKeyV4XToV50",
                       "chTraceStack: enter DoorPhoneV4XToV50",
                       "chTraceStack: enter RemoteBookV4XToV50",
                       "app_log 60/6: Sync cert cp /phone/factory/certs/phoneca/ca.pem /config/certs/phoneca/ca.pem",
                       "etlTrace 2: Encrypt:(hello, phone)->(" + kToken + ")"};

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

    /// Runs a mode through a shell script in the sandbox, in which "$@" is the program with its argument.
    ProcessResult RunThrough(const std::string& script, const std::string& mode)
    {
        RunWith({}); // remembers the files as they are now
        std::vector<std::string> command = Command({mode});
        const auto program = std::find(command.begin(), command.end(), "--") + 1;
        command.insert(program, {"bash", "-c", script, "bash"});
        return RunProcess(command, Environment());
    }

    /// After a run of mode "all", whether or not its reports were written.
    void ExpectAllDone()
    {
        Expect(kUserIni, UserIni(kToken, "RingbackTimeout=60\n"));
        Expect(kUserCert, "certificate");
        ExpectFixUps();
        ExpectNothingElseChanged();
    }
};

} // namespace

TEST(RunSequenceReports, WithoutAModeOnlyTheUsageIsLogged)
{
    BusyPhone phone;
    EXPECT_EQ(phone.RunWith({}).exitStatus, 0);
    EXPECT_EQ(phone.ReportsWithScopes(), (Lines{"app_log 60/6: Usage: ", "#/kestrune [all|dev|pwd]"}));
    EXPECT_THAT(phone.Output(), testing::IsEmpty());
    phone.ExpectNothingElseChanged();
}

TEST(RunSequenceReports, TheUsageNamesTheProgramAsItWasCalled)
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

TEST(RunSequenceReports, WithoutAnyArgumentNotEvenTheProgramsNameIsNeeded)
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

TEST(RunSequenceReports, AFailingPassDoesNotStopTheNext)
{
    BusyPhone phone;
    phone.Put(kTable, "<t><r srcFile='/config/missing.ini' srcSec='S' srcKey='K'/></t>");
    phone.PutFolder("/config/data/contactData.xml");
    phone.Put("/config/data/dialplan.xml", "no XML");
    phone.Put("/phone/factory/certs/phoneca/folder/file", "");
    phone.Run("all");
    EXPECT_THAT(phone.Output(), testing::Contains("Can's load user's inifile!"));
    EXPECT_THAT(phone.ReportsWithScopes(), testing::IsSupersetOf(kPasses));
    phone.Expect(kUserIni, BusyPhone::UserIni(kToken, "RingbackTimeout=60\n"));
}

TEST(RunSequenceReports, ReportsThatGoNowhereChangeNothing)
{
    const char* scripts[] = {
        "exec \"$@\" >&-",
        "exec \"$@\" 2>&-",
        "exec \"$@\" <&- >&- 2>&-",
        "exec \"$@\" >/dev/full",
        "exec \"$@\" 2>/dev/full",
        "exec \"$@\" >/dev/full 2>&1",
        // A pipe whose reader is closed before the first line is written.
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

TEST(RunSequenceReports, LongOutputIntoAPipeWithoutReaderChangesNothing)
{
    BusyPhone phone;
    std::string records;
    for (int number = 0; number < 2000; ++number)
        records += "<r srcFile='/config/user/user.ini' srcSec='Web' srcKey='A'/>";
    phone.Put(kTable, "<t>" + records + "</t>");
    EXPECT_EQ(phone.RunThrough("exec 3> >(exec true); wait $!; exec \"$@\" >&3", "all").exitStatus, 0);
    phone.ExpectAllDone();
}

TEST(RunSequenceReports, RunningOutOfMemoryEndsThePassThatMetItAlone)
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

TEST(RunSequenceReports, WithoutStandardErrorTracesDoNotEndInTheSystemLog)
{
    // The connection to the system log would get the number of standard error, and the secrets would follow it.
    const ScratchFolder folder;
    const LogSocket log(folder.Path("log"));
    BusyPhone phone;
    phone.AddSandboxOptions({"--bind", folder.Path("log"), "/dev/log"});
    EXPECT_EQ(phone.RunThrough("exec \"$@\" 2>&-", "all").exitStatus, 0);
    phone.ExpectAllDone();
    std::vector<std::string> messages = log.Messages();
    if (kHasBundledPlatform && messages.size() > 1) {
        EXPECT_THAT(messages[messages.size() - 2], testing::HasSubstr("no cipher key"));
        messages.erase(messages.end() - 2);
    }
    EXPECT_THAT(messages, testing::ElementsAre(testing::HasSubstr("Usage"), testing::HasSubstr("No config translate"),
                                               testing::HasSubstr("Sync cert"), testing::HasSubstr("mode all: ")));
}

TEST(RunSequenceReports, ARunWithoutStandardDescriptorsChangesTheFilesThatItShouldAndNoOther)
{
    PhoneImage phone;
    phone.PutExamplePhone();
    PhoneImage twin;
    twin.PutExamplePhone();
    phone.Run("all");

    // The sandbox itself gets all three; the shell in it closes them.
    std::vector<std::string> command = twin.Command({"all"});
    const auto program = std::find(command.begin(), command.end(), "--") + 1;
    command.insert(program, {"/bin/sh", "-c", "exec \"$0\" \"$@\" <&- >&- 2>&-"});
    const ProcessResult result = RunProcess(command, twin.Environment());
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "");

    int compared = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(phone.HostPath("/config"))) {
        if (!entry.is_regular_file())
            continue;
        const std::string path = entry.path().string().substr(phone.HostPath("").size());
        EXPECT_EQ(twin.Get(path), phone.Get(path)) << path;
        ++compared;
    }
    EXPECT_GT(compared, 10);
}
