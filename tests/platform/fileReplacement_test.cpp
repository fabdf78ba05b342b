// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// File replacement: the whole old file or the whole new one, whatever the destination is.

#include "fileReplacement.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include "replacementFixture.h"

namespace fs = std::filesystem;
using testing::ElementsAre;

namespace
{

constexpr char kTemporaryEnd[] = ".kestrune-new";

class FileReplacement : public ReplacementFixture
{
};

} // namespace

TEST_F(FileReplacement, AMissingFileIsMadeWith0644LessTheUmaskOrTheGivenBits)
{
    struct Row {
        mode_t mask;
        mode_t given;
        mode_t expected;
    };
    const Row rows[] = {
        {0, kModeLessUmask, 0644},   {022, kModeLessUmask, 0644}, {027, kModeLessUmask, 0640},
        {077, kModeLessUmask, 0600}, {0777, kModeLessUmask, 0},   {077, 0755, 0755},
        {022, 0400, 0400},
    };
    for (const Row& row : rows) {
        const ScratchFolder folder;
        (void)umask(row.mask);
        EXPECT_TRUE(ReplaceFile(folder.Path("new").c_str(), "bytes", row.given));
        EXPECT_EQ(umask(022), row.mask) << "the umask stays";
        struct stat status = {};
        ASSERT_EQ(lstat(folder.Path("new").c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, row.expected) << std::oct << row.mask << ' ' << row.given;
        EXPECT_EQ(status.st_size, 5);
    }
}

TEST_F(FileReplacement, ARegularFileIsReplacedAndKeepsItsPermissionBits)
{
    for (const mode_t mode : {0644u, 0600u, 0666u, 0444u, 0755u, 0u}) {
        Put("file", "old");
        ASSERT_EQ(chmod(folder_.Path("file").c_str(), mode), 0);
        EXPECT_TRUE(ReplaceFile(folder_.Path("file").c_str(), "new bytes", 0700));
        EXPECT_EQ(ModeOf("file"), mode);
        ASSERT_EQ(chmod(folder_.Path("file").c_str(), 0600), 0);
        EXPECT_EQ(Get("file"), "new bytes");
        EXPECT_THAT(Names(), ElementsAre("file"));
    }
}

TEST_F(FileReplacement, ARegularFileKeepsItsOwnerAndGroup)
{
    for (const uid_t owner : {geteuid(), uid_t{1234}}) {
        Put("file", "old");
        if (chown(folder_.Path("file").c_str(), owner, 4321) != 0)
            GTEST_SKIP() << "only root can give a file to another user";
        ASSERT_EQ(chmod(folder_.Path("file").c_str(), 06750), 0);
        EXPECT_TRUE(Replace("file", "new"));
        EXPECT_EQ(StatusOf("file").st_uid, owner);
        EXPECT_EQ(StatusOf("file").st_gid, 4321u);
        EXPECT_EQ(ModeOf("file"), 06750u) << "a change of owner clears bits, so it comes first";
    }
}

TEST_F(FileReplacement, BytesOfEveryKindAndLengthAreWritten)
{
    const std::string all = std::string("\0\xFF\r\n", 4) + std::string(5 << 20, 'x');
    for (const std::string& bytes : {all, std::string(), all.substr(0, 4)}) {
        EXPECT_TRUE(Replace("file", bytes));
        EXPECT_EQ(Get("file"), bytes);
    }
}

TEST_F(FileReplacement, EqualBytesMoveTheModificationTimeAlone)
{
    for (const std::string& bytes : {std::string(), std::string("bytes\n")}) {
        Put("file", bytes);
        Link("link", "file");
        ASSERT_EQ(chmod(folder_.Path("file").c_str(), 0440), 0);
        const timespec old[2] = {{1000, 0}, {1000, 0}};
        const ino_t number = StatusOf("file").st_ino;
        for (const char* name : {"file", "link"}) {
            ASSERT_EQ(utimensat(AT_FDCWD, folder_.Path("file").c_str(), old, 0), 0);
            EXPECT_TRUE(Replace(name, bytes));
            EXPECT_EQ(StatusOf("file").st_ino, number);
            EXPECT_GT(StatusOf("file").st_mtim.tv_sec, 1000);
            EXPECT_EQ(ModeOf("file"), 0440u);
        }
        fs::remove(folder_.Path("link"));
        fs::remove(folder_.Path("file"));
    }
}

TEST_F(FileReplacement, BytesThatDifferInOnePlaceAreWritten)
{
    Put("file", "bytes");
    for (const char* bytes : {"bytez", "Bytez", "Byte", "Bytes", ""}) {
        const ino_t number = StatusOf("file").st_ino;
        EXPECT_TRUE(Replace("file", bytes));
        EXPECT_NE(StatusOf("file").st_ino, number) << bytes;
        EXPECT_EQ(Get("file"), bytes);
    }
}

TEST_F(FileReplacement, AnotherNameOfTheFileKeepsTheOldBytes)
{
    Put("file", "old");
    fs::create_hard_link(folder_.Path("file"), folder_.Path("other name"));
    EXPECT_TRUE(Replace("file", "new"));
    EXPECT_EQ(Get("file"), "new");
    EXPECT_EQ(Get("other name"), "old");
}

TEST_F(FileReplacement, ALinkStaysALinkAndTheFileThatItNamesIsReplaced)
{
    Put("deep/target", "old");
    ASSERT_EQ(chmod(folder_.Path("deep/target").c_str(), 0640), 0);
    Link("relative", "deep/target");
    Link("absolute", folder_.Path("deep/target"));
    Link("chain", "relative");
    Link("deep/up", "../chain");
    Link("folder", "deep");
    for (const std::string name : {"relative", "absolute", "chain", "deep/up", "folder/target"}) {
        EXPECT_TRUE(Replace(name, "new by " + name));
        EXPECT_EQ(Get("deep/target"), "new by " + name);
        EXPECT_EQ(ModeOf("deep/target"), 0640u);
    }
    EXPECT_EQ(LinkTarget("relative"), "deep/target");
    EXPECT_EQ(LinkTarget("absolute"), folder_.Path("deep/target"));
    EXPECT_EQ(LinkTarget("chain"), "relative");
    EXPECT_EQ(LinkTarget("deep/up"), "../chain");
    EXPECT_THAT(Names(), ElementsAre("absolute", "chain", "deep", "folder", "relative"));
    EXPECT_THAT(Names("deep"), ElementsAre("target", "up"));
}

TEST_F(FileReplacement, ALinkToAMissingFileMakesThatFile)
{
    Put("deep/other", "");
    Link("link", "deep/new");
    EXPECT_TRUE(Replace("link", "bytes"));
    EXPECT_EQ(Get("deep/new"), "bytes");
    EXPECT_EQ(LinkTarget("link"), "deep/new");

    Link("far", "missing/new");
    EXPECT_FALSE(Replace("far", "bytes")) << "folders are never made";
    EXPECT_THAT(Names(), ElementsAre("deep", "far", "link"));
}

TEST_F(FileReplacement, AnotherUsersLinkIsReplacedItselfWhereEveryoneMayWrite)
{
    for (const mode_t mode : {01777u, 0777u}) {
        SCOPED_TRACE(testing::Message() << "folder mode " << std::oct << mode);
        Put("target", "untouched");
        Link("foreign", "target");
        Link("chain", "foreign");
        Link("own", "target");
        ASSERT_EQ(chmod(folder_.Path().c_str(), mode), 0);
        if (lchown(folder_.Path("foreign").c_str(), geteuid() + 1, getegid()) != 0)
            GTEST_SKIP() << "only root can give a link to another user";

        EXPECT_TRUE(Replace("chain", "new"));
        EXPECT_EQ(LinkTarget("chain"), "foreign");
        EXPECT_TRUE(S_ISREG(StatusOf("foreign").st_mode));
        EXPECT_EQ(StatusOf("foreign").st_uid, geteuid());
        EXPECT_EQ(ModeOf("foreign"), 0644u);
        EXPECT_EQ(Get("foreign"), "new");
        EXPECT_EQ(Get("target"), "untouched");

        EXPECT_TRUE(Replace("own", "by our own link"));
        EXPECT_EQ(Get("target"), "by our own link");
        for (const char* name : {"foreign", "chain", "own"})
            fs::remove(folder_.Path(name));
    }
}

TEST_F(FileReplacement, AnotherUsersFileIsReplacedByANewOneWhereEveryoneMayWrite)
{
    for (const mode_t mode : {01777u, 0777u}) {
        for (const char* planted : {"planted", "new"}) {
            SCOPED_TRACE(testing::Message() << "folder mode " << std::oct << mode << ", " << planted);
            Put("file", planted);
            ASSERT_EQ(chmod(folder_.Path("file").c_str(), 0666), 0);
            ASSERT_EQ(chmod(folder_.Path().c_str(), mode), 0);
            if (chown(folder_.Path("file").c_str(), geteuid() + 1, getegid()) != 0)
                GTEST_SKIP() << "only root can give a file to another user";
            EXPECT_TRUE(Replace("file", "new"));
            EXPECT_EQ(Get("file"), "new");
            EXPECT_EQ(StatusOf("file").st_uid, geteuid()) << "though he had written the same bytes";
            EXPECT_EQ(ModeOf("file"), 0644u);
        }
    }
}

TEST_F(FileReplacement, ATranslationIsNotReadableBeyondWhatItIsMadeOf)
{
    const mode_t rows[][2] = {{0600, 0600}, {0640, 0640}, {0644, 0644}, {0400, 0600}, {0666, 0644}};
    for (const auto& [source, expected] : rows) {
        Put("old", "old form");
        ASSERT_EQ(chmod(folder_.Path("old").c_str(), source), 0);
        fs::remove(folder_.Path("new"));
        const std::string path = folder_.Path("new");
        EXPECT_TRUE(ReplaceDerivedFile(path.c_str(), "new form", folder_.Path("old").c_str()));
        EXPECT_EQ(ModeOf("new"), expected) << std::oct << source;
        EXPECT_EQ(Get("new"), "new form");
    }
    Put("made before", "older form");
    EXPECT_TRUE(ReplaceDerivedFile(folder_.Path("made before").c_str(), "new form", folder_.Path("missing").c_str()));
    EXPECT_EQ(ModeOf("made before"), 0644u);
    EXPECT_EQ(Get("made before"), "new form");
    EXPECT_FALSE(ReplaceDerivedFile(folder_.Path("missing/new").c_str(), "new form", folder_.Path("old").c_str()));
}

TEST_F(FileReplacement, AnotherUsersLinkInAnOrdinaryFolderIsFollowed)
{
    Put("target", "old");
    Link("foreign", "target");
    if (lchown(folder_.Path("foreign").c_str(), geteuid() + 1, getegid()) != 0)
        GTEST_SKIP() << "only root can give a link to another user";
    ASSERT_EQ(chmod(folder_.Path().c_str(), 0755), 0);
    EXPECT_TRUE(Replace("foreign", "new"));
    EXPECT_EQ(LinkTarget("foreign"), "target");
    EXPECT_EQ(Get("target"), "new");
}

TEST_F(FileReplacement, WhatIsNoRegularFileIsNotReplaced)
{
    Put("folder/inner", "x");
    ASSERT_EQ(mkfifo(folder_.Path("pipe").c_str(), 0600), 0);
    Link("to folder", "folder");
    Link("to pipe", "pipe");
    Link("loop", "loop");
    Link("a", "b");
    Link("b", "a");
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    folder_.Path("socket").copy(address.sun_path, sizeof address.sun_path - 1);
    const int socketFile = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(bind(socketFile, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);

    const std::vector<std::string> before = Names();
    for (const char* name : {"folder", "pipe", "socket", "to folder", "to pipe", "loop", "a"})
        EXPECT_FALSE(Replace(name, "new")) << name;
    EXPECT_EQ(Names(), before);
    EXPECT_TRUE(S_ISFIFO(StatusOf("pipe").st_mode));
    EXPECT_TRUE(S_ISSOCK(StatusOf("socket").st_mode));
    EXPECT_THAT(Names("folder"), ElementsAre("inner"));
    (void)close(socketFile);
}

TEST_F(FileReplacement, APathWithoutAFolderFails)
{
    Put("file", "x");
    for (const char* name : {"missing/file", "file/below", "file/", "missing/"})
        EXPECT_FALSE(Replace(name, "new")) << name;
    EXPECT_FALSE(ReplaceFile("", "new"));
    EXPECT_THAT(Names(), ElementsAre("file"));
    EXPECT_EQ(Get("file"), "x");
}

TEST_F(FileReplacement, ANameTooLongForItsTemporaryFileFailsAndStaysAsItWas)
{
    const std::string longest(255 - std::string(kTemporaryEnd).size(), 'n');
    EXPECT_TRUE(Replace(longest, "new"));
    EXPECT_EQ(Get(longest), "new");
    for (const std::string& name : {longest + "n", std::string(255, 'm')}) {
        EXPECT_FALSE(Replace(name, "new"));
        Put(name, "old");
        EXPECT_FALSE(Replace(name, "new"));
        EXPECT_TRUE(Replace(name, "old")) << "nothing to write";
        EXPECT_EQ(Get(name), "old");
        fs::remove(folder_.Path(name));
    }
    EXPECT_FALSE(Replace(std::string(256, 'n'), "new"));
    EXPECT_THAT(Names(), ElementsAre(longest));
}

TEST_F(FileReplacement, AStaleTemporaryFileIsRemovedAndNoLinkIsFollowedThroughIt)
{
    Put("file", "old");
    Put("victim", "untouched");
    Put("file.kestrune-new", "a longer text that an earlier run left behind");
    ASSERT_EQ(chmod(folder_.Path("file.kestrune-new").c_str(), 0444), 0);
    EXPECT_TRUE(Replace("file", "new 1"));
    EXPECT_EQ(Get("file"), "new 1");

    Link("file.kestrune-new", "victim");
    EXPECT_TRUE(Replace("file", "new 2"));
    EXPECT_EQ(Get("file"), "new 2");
    EXPECT_TRUE(S_ISREG(StatusOf("file").st_mode));

    Link("file.kestrune-new", "nothing");
    EXPECT_TRUE(Replace("file", "new 3"));
    EXPECT_EQ(Get("file"), "new 3");

    fs::create_hard_link(folder_.Path("victim"), folder_.Path("file.kestrune-new"));
    EXPECT_TRUE(Replace("file", "new 4"));
    EXPECT_EQ(Get("file"), "new 4");
    EXPECT_EQ(Get("victim"), "untouched");
    EXPECT_THAT(Names(), ElementsAre("file", "victim"));
}

TEST_F(FileReplacement, AFolderWithTheTemporaryNameMakesTheSaveFail)
{
    Put("file", "old");
    Put("file.kestrune-new/inner", "x");
    EXPECT_FALSE(Replace("file", "new"));
    EXPECT_EQ(Get("file"), "old");
    EXPECT_EQ(Get("file.kestrune-new/inner"), "x");
}

TEST_F(FileReplacement, ASizeLimitIsAFailedSave)
{
    Put("file", "old");
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto oldAction = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = before;
    limit.rlim_cur = 4096;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    const bool isReplaced = Replace("file", std::string(4097, 'x'));
    const bool isMade = Replace("new", std::string(100000, 'x'));
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    (void)std::signal(SIGXFSZ, oldAction);
    EXPECT_FALSE(isReplaced);
    EXPECT_FALSE(isMade);
    EXPECT_EQ(Get("file"), "old");
    EXPECT_THAT(Names(), ElementsAre("file"));
}

TEST_F(FileReplacement, AReadOnlyFolderIsAFailedSave)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "root writes to every folder";
    Put("file", "old");
    ASSERT_EQ(chmod(folder_.Path().c_str(), 0555), 0);
    EXPECT_FALSE(Replace("file", "new"));
    EXPECT_FALSE(Replace("other", "new"));
    EXPECT_TRUE(Replace("file", "old")) << "nothing to write";
    EXPECT_FALSE(RemoveFile(folder_.Path("file").c_str()));
    EXPECT_THAT(Names(), ElementsAre("file"));
    EXPECT_EQ(Get("file"), "old");
    ASSERT_EQ(chmod(folder_.Path().c_str(), 0755), 0);
}

TEST_F(FileReplacement, AReaderFindsOneWholeFileOrTheOther)
{
    const std::string files[] = {std::string(300000, 'a'), std::string(500000, 'b')};
    Put("file", files[0]);
    const pid_t writer = fork();
    if (writer == 0) {
        for (int turn = 1;; ++turn)
            (void)Replace("file", files[turn % 2]);
    }
    int found[] = {0, 0}; // how often each was read: must be both, or the writer did nothing meanwhile
    while (!HasFailure() && (found[0] < 20 || found[1] < 20)) {
        const std::string bytes = Get("file");
        EXPECT_TRUE(bytes == files[0] || bytes == files[1]) << bytes.size();
        ++found[bytes == files[1] ? 1 : 0];
    }
    ASSERT_EQ(kill(writer, SIGKILL), 0);
    ASSERT_EQ(waitpid(writer, /*status=*/nullptr, 0), writer);
}

TEST_F(FileReplacement, ARunThatIsKilledLeavesOneWholeFileOrTheOther)
{
    const std::string files[] = {std::string(300000, 'a'), std::string(500000, 'b')};
    Put("file", files[0]);
    for (int i = 0; i < 40; ++i) {
        const pid_t writer = fork();
        if (writer == 0) {
            for (int turn = 1;; ++turn)
                (void)Replace("file", files[turn % 2]);
        }
        (void)usleep(static_cast<useconds_t>(500 * i));
        ASSERT_EQ(kill(writer, SIGKILL), 0);
        ASSERT_EQ(waitpid(writer, /*status=*/nullptr, 0), writer);
        const std::string found = Get("file");
        EXPECT_TRUE(found == files[0] || found == files[1]) << found.size();
    }
    EXPECT_TRUE(Replace("file", "the next run"));
    EXPECT_EQ(Get("file"), "the next run");
    EXPECT_THAT(Names(), ElementsAre("file"));
}

TEST_F(FileReplacement, RemovingALinkLeavesWhatItNamesAndAMissingFileFails)
{
    Put("target", "x");
    Link("link", "target");
    EXPECT_TRUE(RemoveFile(folder_.Path("link").c_str()));
    EXPECT_THAT(Names(), ElementsAre("target"));
    EXPECT_FALSE(RemoveFile(folder_.Path("missing").c_str()));
    EXPECT_FALSE(RemoveFile(folder_.Path("missing/file").c_str()));
    EXPECT_FALSE(RemoveFile(""));
}
