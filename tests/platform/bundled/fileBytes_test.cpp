// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Reading whole files and following links, with the rules that every service shares.

#include "fileBytes.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include "descriptor.h"
#include "fileReplacement.h"
#include "scratchFolder.h"
#include "stagedFiles.h"

using namespace std::string_literals;

namespace
{

/// The simulated failures of the code's reads and writes.
struct Answers {
    int interruptions = 0;         ///< interrupted calls before one succeeds
    std::size_t most = SIZE_MAX;   ///< bytes that one call processes
    int error = 0;                 ///< the error of every call
    bool isAnyInheritable = false; ///< whether a descriptor was seen that a child would inherit
    std::string failingCall;       ///< the call that fails temporarily
    int failures = 0;              ///< how often it fails
    int reads = 0;
};

Answers* answers = nullptr;

bool FailsThisTime(const char* call)
{
    if (answers == nullptr || answers->failingCall != call || answers->failures == 0)
        return false;
    --answers->failures;
    errno = EIO;
    return true;
}

/// @return false with `errno` set if the call fails
bool AllowCall(int descriptor, std::size_t& size)
{
    if (answers == nullptr)
        return true;
    answers->isAnyInheritable |= (fcntl(descriptor, F_GETFD) & FD_CLOEXEC) == 0;
    if (answers->error != 0) {
        errno = answers->error;
        return false;
    }
    if (answers->interruptions > 0) {
        --answers->interruptions;
        errno = EINTR;
        return false;
    }
    size = std::min(size, answers->most);
    return true;
}

class FileBytes : public testing::Test
{
protected:
    ~FileBytes() override { answers = nullptr; }

    ReadResult Read(const std::string& path)
    {
        bytes_ = "as before";
        return ReadFile(path.c_str(), bytes_);
    }

    void ExpectFails(const std::string& path, ReadResult expected)
    {
        EXPECT_EQ(Read(path), expected) << path;
        EXPECT_EQ(bytes_, "as before") << path;
    }

    void ExpectResolves(const std::string& path, const std::string& expected,
                        LinkResult result = LinkResult::Resolved) const
    {
        std::string resolved = path;
        struct stat status = {};
        EXPECT_EQ(ResolveLinks(resolved, status), result) << path;
        EXPECT_EQ(resolved, expected);
    }

    void Link(const std::string& name, const std::string& target) const
    {
        ASSERT_EQ(symlink(target.c_str(), folder_.Path(name).c_str()), 0) << name;
    }

    ScratchFolder folder_;
    std::string path_ = folder_.Path("file");
    std::string bytes_;
};

} // namespace

extern "C" ssize_t read(int descriptor, void* buffer, size_t size)
{
    if (answers != nullptr)
        ++answers->reads;
    if (FailsThisTime("read"))
        return -1;
    return AllowCall(descriptor, size) ? syscall(SYS_read, descriptor, buffer, size) : -1;
}

extern "C" ssize_t write(int descriptor, const void* bytes, size_t size)
{
    return AllowCall(descriptor, size) ? syscall(SYS_write, descriptor, bytes, size) : -1;
}

extern "C" int open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return FailsThisTime("open") ? -1 : openat(AT_FDCWD, path, flags, mode);
}

extern "C" int fstat(int descriptor, struct stat* status) noexcept
{
    return FailsThisTime("fstat") ? -1 : fstatat(descriptor, "", status, AT_EMPTY_PATH);
}

extern "C" int lstat(const char* path, struct stat* status) noexcept
{
    return FailsThisTime("lstat") ? -1 : fstatat(AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW);
}

TEST_F(FileBytes, AFileIsReadWhole)
{
    for (const std::string& bytes : {""s, "x"s, "a\0\xFF\r\n"s, std::string(3 << 20, '\n')}) {
        WriteBytes(path_, bytes);
        EXPECT_EQ(Read(path_), ReadResult::Done);
        EXPECT_EQ(bytes_, bytes);
    }
}

TEST_F(FileBytes, TheStatusIsThatOfTheFileThatWasRead)
{
    WriteBytes(path_, "12345");
    ASSERT_EQ(chmod(path_.c_str(), 0640), 0);
    Link("link", "file");
    struct stat status = {};
    EXPECT_EQ(ReadFile(folder_.Path("link").c_str(), bytes_, &status), ReadResult::Done);
    EXPECT_EQ(status.st_size, 5);
    EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFREG | 0640));
}

TEST_F(FileBytes, WhatHasNoPathIsMissing)
{
    WriteBytes(path_, "x");
    Link("dangling", "nothing");
    for (const char* name : {"nothing", "no folder/file", "file/below a file", "dangling"})
        ExpectFails(folder_.Path(name), ReadResult::Missing);
    ExpectFails("", ReadResult::Missing);
}

TEST_F(FileBytes, WhatIsNoRegularFileIsUnreadableAndNeverWaitedFor)
{
    ASSERT_EQ(mkfifo(folder_.Path("pipe").c_str(), 0600), 0);
    Link("link to pipe", "pipe");
    Link("link to folder", ".");
    Link("loop", "loop");
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    folder_.Path("socket").copy(address.sun_path, sizeof address.sun_path - 1);
    const Descriptor socketFile(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(bind(socketFile.Number(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);

    for (const char* name : {"", "pipe", "socket", "link to pipe", "link to folder", "loop"})
        ExpectFails(folder_.Path(name), ReadResult::Unreadable);
    ExpectFails("/dev/null", ReadResult::Unreadable);
    ExpectFails("/dev/zero", ReadResult::Unreadable);
}

TEST_F(FileBytes, AFileWithoutReadPermissionIsUnreadable)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "root reads every file";
    WriteBytes(path_, "x");
    ASSERT_EQ(chmod(path_.c_str(), 0200), 0);
    ExpectFails(path_, ReadResult::Unreadable);
}

TEST_F(FileBytes, LinksOfOnesOwnAreFollowed)
{
    WriteBytes(folder_.Path("deep/target"), "content");
    Link("relative", "deep/target");
    Link("absolute", folder_.Path("deep/target"));
    Link("chain", "absolute");
    Link("deep/up", "../chain");
    Link("folder", "deep");
    for (const char* name : {"relative", "absolute", "chain", "deep/up", "folder/target", "folder/up"}) {
        EXPECT_EQ(Read(folder_.Path(name)), ReadResult::Done) << name;
        EXPECT_EQ(bytes_, "content") << name;
    }
    ASSERT_EQ(chmod(folder_.Path().c_str(), 01777), 0);
    EXPECT_EQ(Read(folder_.Path("relative")), ReadResult::Done) << "in a sticky folder too";
}

TEST_F(FileBytes, AnotherUsersFilesAndLinksCountAsMissingWhereEveryoneMayWrite)
{
    WriteBytes(path_, "secret");
    WriteBytes(folder_.Path("planted"), "syslog.example.net");
    Link("foreign", "file");
    Link("chain", "foreign");
    Link("to planted", "planted");
    if (lchown(folder_.Path("foreign").c_str(), geteuid() + 1, getegid()) != 0 ||
        chown(folder_.Path("planted").c_str(), geteuid() + 1, getegid()) != 0)
        GTEST_SKIP() << "only root can give a file to another user";

    for (const mode_t mode : {01777u, 0777u, 0757u, 01757u}) {
        SCOPED_TRACE(testing::Message() << "folder mode " << std::oct << mode);
        ASSERT_EQ(chmod(folder_.Path().c_str(), mode), 0);
        for (const char* name : {"foreign", "chain", "planted", "to planted"})
            ExpectFails(folder_.Path(name), ReadResult::Missing);
        ExpectResolves(folder_.Path("chain"), folder_.Path("foreign"), LinkResult::Foreign);
        ExpectResolves(folder_.Path("to planted"), folder_.Path("planted"), LinkResult::Foreign);
        EXPECT_TRUE(IsForeign(folder_.Path("planted")));
        EXPECT_TRUE(IsForeign(folder_.Path("foreign")));
        EXPECT_EQ(Read(path_), ReadResult::Done) << "one's own";
        EXPECT_FALSE(IsForeign(path_));
        EXPECT_FALSE(IsForeign(folder_.Path("nothing")));
    }
    for (const mode_t mode : {0755u, 0775u, 01775u, 01755u}) {
        SCOPED_TRACE(testing::Message() << "folder mode " << std::oct << mode);
        ASSERT_EQ(chmod(folder_.Path().c_str(), mode), 0);
        for (const char* name : {"foreign", "chain", "planted", "to planted"})
            EXPECT_EQ(Read(folder_.Path(name)), ReadResult::Done) << name;
        EXPECT_FALSE(IsForeign(folder_.Path("planted")));
    }
}

TEST_F(FileBytes, RootsFilesAreTrustedByEveryUser)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can become another user";
    ASSERT_EQ(chmod(folder_.Path().c_str(), 01777), 0);
    for (const char* name : {"roots", "others"})
        WriteBytes(folder_.Path(name), name);
    Link("roots link", "roots");
    ASSERT_EQ(chown(folder_.Path("others").c_str(), 2345, 2345), 0);
    const pid_t child = fork();
    if (child == 0) {
        const bool isOther = setgid(1234) == 0 && setuid(1234) == 0;
        const bool isRight = Read(folder_.Path("roots")) == ReadResult::Done && bytes_ == "roots" &&
                             Read(folder_.Path("roots link")) == ReadResult::Done &&
                             Read(folder_.Path("others")) == ReadResult::Missing;
        _exit(isOther && isRight ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST_F(FileBytes, AFileOfMoreThan4MebibytesIsNotRead)
{
    Answers counting;
    for (const std::uint64_t size : {(std::uint64_t{4} << 20) + 1, std::uint64_t{1} << 32, std::uint64_t{1} << 40}) {
        WriteBytes(path_, "");
        if (truncate64(path_.c_str(), static_cast<off64_t>(size)) != 0)
            continue; // larger than this file system allows
        Link("link", "file");
        answers = &counting;
        ExpectFails(path_, ReadResult::TooLarge);
        ExpectFails(folder_.Path("link"), ReadResult::TooLarge);
        answers = nullptr;
        ASSERT_EQ(unlink(folder_.Path("link").c_str()), 0);
    }
    EXPECT_EQ(counting.reads, 0);

    ASSERT_EQ(truncate(path_.c_str(), 4 << 20), 0);
    EXPECT_EQ(Read(path_), ReadResult::Done);
    EXPECT_TRUE(bytes_ == std::string(4 << 20, '\0'));
}

TEST_F(FileBytes, LinksResolveToTheNameThatIsNoLink)
{
    WriteBytes(folder_.Path("deep/target"), "");
    Link("relative", "deep/target");
    Link("absolute", folder_.Path("deep/target"));
    Link("chain", "relative");
    Link("dangling", "deep/nothing");
    Link("far", "no folder/nothing");
    const std::string target = folder_.Path("deep/target");
    ExpectResolves(target, target);
    ExpectResolves(folder_.Path("nothing"), folder_.Path("nothing"), LinkResult::Missing);
    ExpectResolves(folder_.Path("relative"), target);
    ExpectResolves(folder_.Path("absolute"), target);
    ExpectResolves(folder_.Path("chain"), target);
    ExpectResolves(folder_.Path("dangling"), folder_.Path("deep/nothing"), LinkResult::Missing);
    ExpectResolves(folder_.Path("far"), folder_.Path("no folder/nothing"), LinkResult::Missing);
}

TEST_F(FileBytes, LinksThatLeadInACircleDoNotResolve)
{
    Link("self", "self");
    Link("a", "b");
    Link("b", folder_.Path("a"));
    for (const char* name : {"self", "a", "b"}) {
        std::string path = folder_.Path(name);
        struct stat status = {};
        EXPECT_EQ(ResolveLinks(path, status), LinkResult::Unresolvable) << name;
    }
}

TEST_F(FileBytes, ReadingGoesOnAfterInterruptionsAndShortReads)
{
    WriteBytes(path_, "0123456789");
    Answers difficult;
    difficult.interruptions = 3;
    difficult.most = 3;
    answers = &difficult;
    EXPECT_EQ(Read(path_), ReadResult::Done);
    EXPECT_EQ(bytes_, "0123456789");
    EXPECT_EQ(difficult.interruptions, 0);
    EXPECT_FALSE(difficult.isAnyInheritable) << "every descriptor is close-on-exec";
}

TEST_F(FileBytes, AFailingReadMakesTheFileUnreadable)
{
    WriteBytes(path_, "0123456789");
    for (const int error : {EIO, EINTR}) {
        Answers failing;
        failing.error = error;
        answers = &failing;
        ExpectFails(path_, ReadResult::Unreadable);
    }
}

TEST_F(FileBytes, AReadThatFailsIsTriedAgainTwice)
{
    WriteBytes(path_, "content");
    Link("link", "file");
    const char* rows[][2] = {{"open", "file"},  {"fstat", "file"}, {"read", "file"}, {"open", "link"},
                             {"lstat", "link"}, {"fstat", "link"}, {"read", "link"}};
    for (const auto& [call, name] : rows) {
        SCOPED_TRACE(std::string(call) + " of the " + name);
        for (int failures = 1; failures <= 3; ++failures) {
            Answers failing;
            failing.failingCall = call;
            failing.failures = failures;
            answers = &failing;
            if (failures < 3) {
                EXPECT_EQ(Read(folder_.Path(name)), ReadResult::Done) << failures;
                EXPECT_EQ(bytes_, "content") << failures;
            } else {
                ExpectFails(folder_.Path(name), ReadResult::Unreadable);
            }
            EXPECT_EQ(failing.failures, 0);
            answers = nullptr;
        }
    }
}

TEST_F(FileBytes, AFileThatCouldNotBeReadIsNotChangedInThatRun)
{
    WriteBytes(path_, "content");
    Link("link", "file");
    for (const char* call : {"open", "fstat", "read"}) {
        for (const char* name : {"file", "link"}) {
            SCOPED_TRACE(std::string(call) + " of the " + name);
            BeginStaging();
            Answers failing;
            failing.failingCall = call;
            failing.failures = 3;
            answers = &failing;
            ExpectFails(folder_.Path(name), ReadResult::Unreadable);
            answers = nullptr;
            EXPECT_FALSE(ReplaceFile(path_.c_str(), "defaults"));
            EXPECT_FALSE(ReplaceFile(folder_.Path("link").c_str(), "defaults"));
            EXPECT_FALSE(RemoveFile(path_.c_str()));
            EXPECT_EQ(Read(path_), ReadResult::Done) << "later reads may find it";
            EndStaging();
        }
    }
}

TEST_F(FileBytes, WritingGoesOnAfterInterruptionsAndShortWrites)
{
    const Descriptor file(open(path_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    Answers difficult;
    difficult.interruptions = 3;
    difficult.most = 3;
    answers = &difficult;
    EXPECT_TRUE(WriteAll(file.Number(), "0123456789"));
    EXPECT_TRUE(WriteAll(file.Number(), ""));
    answers = nullptr;
    EXPECT_EQ(ReadBytes(path_), "0123456789");
}

TEST_F(FileBytes, AFailingWriteIsReported)
{
    const Descriptor file(open(path_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    for (const int error : {ENOSPC, EIO, EINTR}) {
        Answers failing;
        failing.error = error;
        answers = &failing;
        EXPECT_FALSE(WriteAll(file.Number(), "x")) << error;
    }
    Answers full;
    full.most = 0;
    answers = &full;
    EXPECT_FALSE(WriteAll(file.Number(), "x")) << "a write that takes nothing";
}

TEST_F(FileBytes, ADescriptorIsClosedWithItsOwner)
{
    int number = -1;
    {
        const Descriptor folder(open(folder_.Path().c_str(), O_RDONLY | O_CLOEXEC));
        ASSERT_TRUE(folder.IsOpen());
        number = folder.Number();
    }
    EXPECT_EQ(fcntl(number, F_GETFD), -1);
    EXPECT_FALSE(Descriptor(-1).IsOpen());
}

TEST(FileBytesFolderOf, IsWhatStandsBeforeTheLastName)
{
    const char* rows[][2] = {
        {"/config/user/user.ini", "/config/user"},
        {"/file", "/"},
        {"file", "."},
        {"a/b", "a"},
        {"../b", ".."},
        {"./b", "."},
    };
    for (const auto& row : rows)
        EXPECT_EQ(FolderOf(row[0]), row[1]) << row[0];
}
