// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The files that a run reads, and how often: counted by their openings in whole runs under strace. On these phones a
// counted file is not saved, since a save reads as well; where it is saved, two runs with the same number of saves are
// compared.

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>

#include "bundledPlatform.h"
#include "phoneImage.h"

namespace
{

using Lines = std::vector<std::string>;

constexpr char kSystem[] = "/config/system/system.ini";
constexpr char kVersion[] = "/config/version.ini";
constexpr char kFactory[] = "/phone/factory/user/user.ini";
constexpr char kTable[] = "/phone/resource/kestrune.xml";
constexpr char kList[] = "/phone/resource/encryptconfig.xml";
constexpr char kKey[] = "/phone/factory/certs/pwcipher.key";
constexpr char kHandOver[] = "/tmp/VersionInfo.cfg";
constexpr char kAccount0[] = "/config/user/voip/sipAccount0.cfg";
constexpr char kA[] = "/config/a.ini";
constexpr char kB[] = "/config/b.ini";

constexpr const char* kAllModes[] = {"all", "dev", "pwd", "1", "2", "other"};

/// The old data files, in the order of their translators.
constexpr const char* kOldData[] = {"/config/data/contactData.xml",   "/config/data/dialplan.xml",
                                    "/config/data/dialnow.xml",       "/config/data/dsskey.xml",
                                    "/config/data/doorphonedata.xml", "/config/data/remotebook.xml"};

constexpr const char* kKeyLayouts[] = {
    "/config/data/linekey.xml", "/config/data/programkey.xml", "/config/data/expkey0.xml", "/config/data/expkey1.xml",
    "/config/data/expkey2.xml", "/config/data/expkey3.xml",    "/config/data/expkey4.xml", "/config/data/expkey5.xml"};

/// A phone on which the fix-ups have nothing to do.
class ReadsOfARun : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!kHasBundledPlatform)
            GTEST_SKIP() << "another platform may read a file more often for one question";
        if (PhoneImage::IsEmulated())
            GTEST_SKIP() << "the calls of the emulator would be counted";
#if defined(__SANITIZE_ADDRESS__)
        GTEST_SKIP() << "the search for leaks does not work under strace";
#endif
        PutUser("");
        phone_.AddSandboxOptions({"--bind", trace_.Path(), "/trace"});
    }

    void PutUser(const std::string& more)
    {
        phone_.Put(kUserIni, "[Feature]\nRingbackTimeout=90\n" + more);
    }

    /// Runs the mode.
    ///
    /// @return the phone's files that were opened for reading, or would have been if they existed, in order
    Lines Opened(const std::string& mode)
    {
        std::vector<std::string> command = phone_.Command({mode});
        const auto program = std::find(command.begin(), command.end(), "--") + 1;
        command.insert(program, {"strace", "-o", "/trace/calls", "-e", "trace=?open,openat,?openat2"});
        const ProcessResult result = RunProcess(command, phone_.Environment());
        EXPECT_EQ(result.exitStatus, 0) << result.errors;

        Lines opened;
        std::istringstream calls(ReadBytes(trace_.Path("calls")));
        const std::regex reading("open.*\"(/(config|phone|tmp)/[^\"]*)\", [^,]*O_RDONLY.*");
        for (std::string call; std::getline(calls, call);) {
            std::smatch match;
            if (std::regex_match(call, match, reading) && call.find("O_DIRECTORY") == std::string::npos)
                opened.push_back(match[1]);
        }
        return opened;
    }

    int CountOf(const std::string& mode, const std::string& path)
    {
        const Lines opened = Opened(mode);
        return static_cast<int>(std::count(opened.begin(), opened.end(), path));
    }

    PhoneImage phone_;
    ScratchFolder trace_;
};

/// The places of the first opening of the file and of the last.
std::ptrdiff_t First(const Lines& opened, const std::string& path)
{
    return std::find(opened.begin(), opened.end(), path) - opened.begin();
}

std::ptrdiff_t Last(const Lines& opened, const std::string& path)
{
    return opened.rend() - std::find(opened.rbegin(), opened.rend(), path) - 1;
}

std::string Table(const std::string& records)
{
    return "<t>" + records + "</t>";
}

/// A record whose destination cannot take the value, and so is not saved.
std::string Unsaved(const std::string& attributes)
{
    return "<r " + attributes + " dstFile='/config/b.ini' dstSec='S' dstKey='a=b'/>";
}

std::string Entry(const std::string& file, const std::string& key)
{
    return "<e file='" + file + "' section='S' key='" + key + "'/>";
}

} // namespace

TEST_F(ReadsOfARun, AnyOtherWordReadsWhatTheFixUpsAskFor)
{
    phone_.PutExamplePhone();
    PutUser("");
    for (int number = 0; number <= 16; ++number)
        phone_.Remove(Account(number));
    phone_.Put(kAccount0, "[account]\nSCALineKeyNumber=1\nCancelTimer=60\n");
    EXPECT_EQ(Opened("other"), (Lines{kAccount0, kUserIni}));

    phone_.Put(kAccount0, "[account]\nSCALineKeyNumber=0\n");
    phone_.Put(kUserIni, "[Feature]\nRingbackTimeout=0\n"); // a time-out like any other
    EXPECT_EQ(Opened("other"), (Lines{kAccount0, kUserIni}));
}

TEST_F(ReadsOfARun, TheFirstAccountIsAskedForItsTimerOnlyWithoutARingbackTimeout)
{
    phone_.Put(kAccount0, "[account]\nSCALineKeyNumber=1\nCancelTimer=60\n");
    phone_.Put(kUserIni, "");
    EXPECT_EQ(CountOf("other", kAccount0), 2);
    EXPECT_EQ(CountOf("other", kAccount0), 1); // the run before has set the time-out
}

TEST_F(ReadsOfARun, TheSwitchOfTheTranslationsIsReadOnceAfterTheTable)
{
    for (const char* version : {"", "[SyncConfig]\nbEnableFromOld=1\n", "[SyncConfig]\nbEnableFromOld=0\n"}) {
        SCOPED_TRACE(version);
        phone_.Put(kVersion, version);
        phone_.Put(kA, "[S]\nA=1\n");
        phone_.Put(kB, "[S]\n");
        phone_.Put(kTable, Table(Unsaved("srcFile='/config/a.ini' srcSec='S' srcKey='A'")));
        for (const char* path : kOldData)
            phone_.Put(path, "");
        for (const std::string mode : kAllModes) {
            SCOPED_TRACE(mode);
            const Lines opened = Opened(mode);
            const bool isAsked = mode == "all" || mode == "dev";
            EXPECT_EQ(std::count(opened.begin(), opened.end(), kVersion), isAsked ? 1 : 0);
            if (!isAsked)
                continue;
            for (const char* path : {kTable, kA, kB})
                EXPECT_LT(Last(opened, path), First(opened, kVersion)) << path;
            for (const char* path : kOldData)
                EXPECT_LT(First(opened, kVersion), First(opened, path)) << path; // those not opened are at the end
        }
    }
}

TEST_F(ReadsOfARun, WithoutTheVersionFileItIsLookedForOnce)
{
    EXPECT_EQ(CountOf("dev", kVersion), 1);
}

TEST_F(ReadsOfARun, SwitchedOffNoDataFileIsOpened)
{
    phone_.PutExamplePhone();
    phone_.Put(kVersion, "[SyncConfig]\nbEnableFromOld=0\n");
    for (const char* mode : {"all", "dev"})
        EXPECT_THAT(Opened(mode), testing::Not(testing::Contains(testing::StartsWith("/config/data/")))) << mode;
}

TEST_F(ReadsOfARun, SwitchedOnEachOldDataFileIsReadOnceInItsTurn)
{
    for (const char* path : kOldData)
        phone_.Put(path, "<other/>");
    for (const char* mode : {"all", "dev"}) {
        Lines data;
        for (const std::string& path : Opened(mode)) {
            if (path.rfind("/config/data/", 0) == 0)
                data.push_back(path);
        }
        EXPECT_EQ(data, Lines(std::begin(kOldData), std::end(kOldData))) << mode;
    }
}

TEST_F(ReadsOfARun, OtherModesOpenNoOldDataFileAndOnlyTwoOpensKeyLayouts)
{
    for (const char* path : kOldData)
        phone_.Put(path, "<other/>");
    for (const char* path : kKeyLayouts)
        phone_.Put(path, "<other/>");
    for (const char* mode : {"pwd", "1", "2", "other"})
        EXPECT_THAT(Opened(mode), testing::Not(testing::Contains(testing::StartsWith("/config/data/")))) << mode;

    phone_.Put(kHandOver, "");
    Lines layouts;
    for (const std::string& path : Opened("2")) {
        if (path.rfind("/config/data/", 0) == 0)
            layouts.push_back(path);
    }
    EXPECT_EQ(layouts, Lines(std::begin(kKeyLayouts), std::end(kKeyLayouts)));
    for (const char* mode : {"all", "dev", "pwd", "1", "other"})
        EXPECT_THAT(Opened(mode), testing::Not(testing::Contains("/config/data/linekey.xml"))) << mode;
}

TEST_F(ReadsOfARun, TheUsersSyncIsReadOnlyWhenTheFactorysAsksForIt)
{
    constexpr int kFixUp = 1;
    struct Row {
        const char* factory; // null: no such file
        const char* user;
        int userReads; // after the fix-up's
    };
    const Row rows[] = {
        {nullptr, "", 0},
        {"", "", 0},
        {"[Sync]\nSyncCfgByVersion=0\n", "", 0},
        {"[Sync]\nSyncCfgByVersion=2\n", "", 0},
        {"[Sync]\nSyncCfgByVersion=-1\n", "[Sync]\nSyncCfgByVersion=0\n", 0},
        {"[Sync]\nSyncCfgByVersion=1\n", "[Sync]\nSyncCfgByVersion=1\n", 1},
        {"[Sync]\nSyncCfgByVersion=1\n", "[Sync]\nSyncCfgByVersion=2\n", 1},
        {"[Sync]\nSyncCfgByVersion=1\n", "[Sync]\nSyncCfgByVersion=0\n", 2}, // the second is for what is handed over
        {"[Sync]\nSyncCfgByVersion=1\n", "", 2},
    };
    phone_.Put(kSystem, "[Syslog]\n");
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.factory == nullptr ? "none" : row.factory) + row.user);
        phone_.Remove(kFactory);
        if (row.factory != nullptr)
            phone_.Put(kFactory, row.factory);
        PutUser(row.user);
        const Lines opened = Opened("1");
        EXPECT_EQ(std::count(opened.begin(), opened.end(), kFactory), 1);
        EXPECT_EQ(std::count(opened.begin(), opened.end(), kUserIni), kFixUp + row.userReads);
        EXPECT_EQ(std::count(opened.begin(), opened.end(), kSystem), row.userReads == 2 ? 1 : 0);
    }
    for (const char* mode : {"2", "other"})
        EXPECT_EQ(CountOf(mode, kFactory), 0) << mode;
}

TEST_F(ReadsOfARun, TheFactoryAccountIsNotConsultedWhenThereIsADirectIPFile)
{
    constexpr char kFactoryAccount[] = "/phone/factory/user/voip/sipAccount16.cfg";
    phone_.Put(kFactoryAccount, "[account]\nLabel=?factory\n");
    phone_.Put("/config/user/voip/directip.cfg", "[account]\nLabel=direct\n");
    EXPECT_EQ(CountOf("2", kFactoryAccount), 0);
    EXPECT_EQ(CountOf("2", kFactoryAccount), 1); // the run before has taken the direct-IP file
    for (const char* mode : {"all", "dev", "pwd", "1", "other"})
        EXPECT_EQ(CountOf(mode, kFactoryAccount), 0) << mode;
}

TEST_F(ReadsOfARun, WithoutAHandOverModeTwoAsksForNoSettings)
{
    phone_.Put(kSystem, "[Syslog]\n");
    EXPECT_EQ(Opened("2"), (Lines{kUserIni})); // the fix-up
}

TEST_F(ReadsOfARun, TheKeyIsReadOnceAndOnlyWhenItIsNeeded)
{
    // Texts that were enciphered with the development key, so that both passes need the cipher for each.
    const std::string first = "q252TBV7RXOe8CJI0YcqWbFTAWxn";
    const std::string second = "auhsCPzGnqyO2J1qJ6judCkZH8MJ6A";
    phone_.Put(kFactory, "[PhoneSetting]\nEnLock=1\n");
    phone_.Put(kVersion, "[SyncConfig]\nbEnableFromOld=0\n");
    phone_.Put(kTable, Table(Unsaved("srcFile='/config/a.ini' srcSec='S' srcKey='A'") +
                             Unsaved("srcFile='/config/a.ini' srcSec='S' srcKey='B'")));
    phone_.Put(kList, "<l>" + Entry(kA, "A") + Entry(kB, "A") + Entry(kA, "B") + "</l>");
    struct Row {
        const char* what;
        std::string key; // empty: no such file
    };
    const Row rows[] = {{"a key", std::string(128, 'a')}, {"a malformed key", "none"}, {"no key", ""}};
    for (const Row& row : rows) {
        phone_.Remove(kKey);
        if (!row.key.empty())
            phone_.Put(kKey, row.key);
        for (const std::string mode : kAllModes) {
            SCOPED_TRACE(row.what + (", mode " + mode));
            phone_.Put(kA, "[S]\nA=" + first + "\nB=" + second + "\n");
            phone_.Put(kB, "[S]\nA=" + first + "\n");
            EXPECT_EQ(CountOf(mode, kKey), mode == "all" || mode == "dev" || mode == "pwd" ? 1 : 0);
            phone_.Put(kA, "[S]\nA=\nB=\n");
            phone_.Put(kB, "[S]\nA=\n");
            EXPECT_EQ(CountOf(mode, kKey), 0);
        }
    }
}

TEST_F(ReadsOfARun, WithEqualLocksNeitherTheListNorAnEntryIsRead)
{
    phone_.Put(kFactory, "[PhoneSetting]\nEnLock=0\n");
    phone_.Put(kList, "<l>" + Entry(kA, "A") + "</l>");
    phone_.Put(kA, "[S]\nA=1\n");
    EXPECT_EQ(Opened("pwd"), (Lines{kUserIni, kUserIni, kFactory})); // the fix-up, then the two locks
}

TEST_F(ReadsOfARun, ThePasswordPassReadsEachLockAndTheListOnce)
{
    phone_.Put(kFactory, "[PhoneSetting]\nEnLock=1\n");
    phone_.Put(kList, "<l><e file='/config/a.ini' section='S' key='A' active='false'/></l>");
    phone_.Put(kA, "[S]\nA=1\n");
    EXPECT_EQ(Opened("pwd"), (Lines{kUserIni, kUserIni, kFactory, kList})); // an entry that is not active is not read
}

TEST_F(ReadsOfARun, ConsecutiveEntriesOfAFileShareOneRead)
{
    // As many saves in every row, none of which changes a file: only the reads differ.
    phone_.Put(kFactory, "[PhoneSetting]\nEnLock=1\n");
    phone_.Put(kA, "[S]\nA=\n");
    phone_.Put(kB, "[S]\nA=\n");
    const std::string a = Entry(kA, "A");
    const std::string b = Entry(kB, "A");
    const std::string missing = Entry("/config/missing.ini", "A");
    const auto readsWith = [this](const std::string& entries) {
        phone_.Put(kList, "<l>" + entries + "</l>");
        return CountOf("pwd", kA);
    };
    const int once = readsWith(a + a + a + b + b);
    EXPECT_EQ(readsWith(b + a + a + a + b), once);
    EXPECT_EQ(readsWith(a + a + b + a + b), once + 1);
    EXPECT_EQ(readsWith(a + b + a + b + a), once + 2);
    EXPECT_EQ(readsWith(a + a + missing + a + b + b), once + 1); // a file that does not load is not kept either
    EXPECT_EQ(readsWith(a + Entry("/config/./a.ini", "A") + a + a), once + 1); // the same file under another name
    const std::string inactive = "<e file='/config/b.ini' section='S' key='A' active='false'/>";
    EXPECT_EQ(readsWith(a + inactive + a + inactive + a), once);
}

TEST_F(ReadsOfARun, TheTableAndTheLockAreReadOnceAndTheFilesOfARecordOnceForIt)
{
    phone_.Put(kVersion, "[SyncConfig]\nbEnableFromOld=0\n");
    phone_.Put(kA, "[S]\nA=1\n");
    phone_.Put(kB, "[S]\n");
    const std::string record = Unsaved("srcFile='/config/a.ini' srcSec='S' srcKey='A'");
    for (int count = 1; count <= 3; ++count) {
        std::string records;
        Lines expected = {kUserIni, kTable, kUserIni}; // the fix-up, the table, the lock
        for (int number = 0; number < count; ++number) {
            records += record;
            expected.push_back(kA);
            expected.push_back(kB);
        }
        expected.push_back(kVersion);
        phone_.Put(kTable, Table(records));
        EXPECT_EQ(Opened("dev"), expected);
    }
}

TEST_F(ReadsOfARun, ARecordWithoutASourceAttributeReadsNoSource)
{
    phone_.Put(kVersion, "[SyncConfig]\nbEnableFromOld=0\n");
    phone_.Put(kA, "[S]\nA=1\n");
    phone_.Put(kB, "[S]\n");
    for (const char* attributes :
         {"srcSec='S' srcKey='A'", "srcFile='/config/a.ini' srcKey='A'", "srcFile='/config/a.ini' srcSec='S'", ""}) {
        phone_.Put(kTable, Table(Unsaved(attributes)));
        EXPECT_EQ(Opened("dev"), (Lines{kUserIni, kTable, kUserIni, kB, kVersion})) << attributes;
    }
}

TEST_F(ReadsOfARun, WithoutATableTheLockIsNotRead)
{
    phone_.Put(kVersion, "[SyncConfig]\nbEnableFromOld=0\n");
    EXPECT_EQ(Opened("dev"), (Lines{kUserIni, kVersion}));
}

TEST_F(ReadsOfARun, WithoutAModeNothingIsRead)
{
    phone_.PutExamplePhone();
    std::vector<std::string> command = phone_.Command({});
    const auto program = std::find(command.begin(), command.end(), "--") + 1;
    command.insert(program, {"strace", "-o", "/trace/calls", "-e", "trace=?open,openat,?openat2"});
    EXPECT_EQ(RunProcess(command, phone_.Environment()).exitStatus, 0);
    const std::string calls = ReadBytes(trace_.Path("calls"));
    for (const char* tree : {"\"/config", "\"/phone", "\"/tmp"})
        EXPECT_EQ(calls.find(tree), std::string::npos) << tree;
}
