// File replacement: the old file whole or the new one whole, whatever stands at the destination, whichever call fails
// and wherever the run is cut.

#include "fileReplacement.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include "scratchFolder.h"

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace
{

constexpr char kTemporaryEnd[] = ".kestrune-new";
constexpr int kNoCall = -1;

/// The system calls that change something, as the code makes them, while one of these is set to work.
struct CallLog {
    std::vector<std::string> calls;
    int failing = kNoCall;              ///< number of the call that fails
    bool isStatusUnknown = false;       ///< whether nothing can be said of an open file
    int last = kNoCall;                 ///< number of the call with which the process ends
    bool isAnyInheritable = false;      ///< whether a descriptor was seen that a child would get
    bool isAnyReadableByOthers = false; ///< whether the new bytes were written where others could read them
};

CallLog* callLog = nullptr;

std::string NameOf(int descriptor)
{
    return fs::read_symlink("/proc/self/fd/" + std::to_string(descriptor)).filename().string();
}

/// @return true with `errno` set when this call is the one to fail
bool Fails(const std::string& call)
{
    if (callLog == nullptr)
        return false;
    callLog->calls.push_back(call);
    errno = ENOSPC;
    return static_cast<int>(callLog->calls.size()) - 1 == callLog->failing;
}

bool FailsOn(const std::string& call, int descriptor)
{
    if (callLog == nullptr)
        return false;
    callLog->isAnyInheritable |= (fcntl(descriptor, F_GETFD) & FD_CLOEXEC) == 0;
    return Fails(call + " " + NameOf(descriptor));
}

template <typename Result>
Result Done(Result result)
{
    if (callLog != nullptr && static_cast<int>(callLog->calls.size()) - 1 == callLog->last)
        _exit(0);
    return result;
}

} // namespace

extern "C" ssize_t write(int descriptor, const void* bytes, size_t size)
{
    struct stat status = {};
    if (callLog != nullptr && fstat(descriptor, &status) == 0)
        callLog->isAnyReadableByOthers |= (status.st_mode & 07777) != 0600;
    if (FailsOn("write", descriptor))
        return -1;
    return Done(syscall(SYS_write, descriptor, bytes, size));
}

extern "C" int fstat(int descriptor, struct stat* status) noexcept
{
    if (callLog != nullptr && callLog->isStatusUnknown) {
        errno = EIO;
        return -1;
    }
    return fstatat(descriptor, "", status, AT_EMPTY_PATH);
}

extern "C" int fchown(int descriptor, uid_t owner, gid_t group) noexcept
{
    return FailsOn("fchown", descriptor) ? -1 : Done(fchownat(descriptor, "", owner, group, AT_EMPTY_PATH));
}

extern "C" int fchmod(int descriptor, mode_t mode) noexcept
{
    return FailsOn("fchmod", descriptor) ? -1 : Done(static_cast<int>(syscall(SYS_fchmod, descriptor, mode)));
}

extern "C" int fsync(int descriptor)
{
    return FailsOn("fsync", descriptor) ? -1 : Done(static_cast<int>(syscall(SYS_fsync, descriptor)));
}

extern "C" int rename(const char* from, const char* to) noexcept
{
    return Fails("rename " + fs::path(to).filename().string()) ? -1 : Done(renameat(AT_FDCWD, from, AT_FDCWD, to));
}

extern "C" int remove(const char* path) noexcept
{
    if (Fails("remove " + fs::path(path).filename().string()))
        return -1;
    const int result = unlinkat(AT_FDCWD, path, 0);
    return Done(result == -1 && errno == EISDIR ? unlinkat(AT_FDCWD, path, AT_REMOVEDIR) : result);
}

namespace
{

class Replacement : public testing::Test
{
protected:
    Replacement() : mask_(umask(022)) { FlushChangedFolders(); }

    ~Replacement() override
    {
        callLog = nullptr;
        (void)umask(mask_);
    }

    bool Replace(const std::string& name, const std::string& bytes) const
    {
        return ReplaceFile(folder_.Path(name).c_str(), bytes);
    }

    std::string Get(const std::string& name) const { return ReadBytes(folder_.Path(name)); }
    void Put(const std::string& name, const std::string& bytes) const { WriteBytes(folder_.Path(name), bytes); }

    void Link(const std::string& name, const std::string& target) const
    {
        ASSERT_EQ(symlink(target.c_str(), folder_.Path(name).c_str()), 0) << name;
    }

    std::string LinkTarget(const std::string& name) const { return fs::read_symlink(folder_.Path(name)).string(); }

    struct stat StatusOf(const std::string& name) const
    {
        struct stat status = {};
        EXPECT_EQ(lstat(folder_.Path(name).c_str(), &status), 0) << name;
        return status;
    }

    mode_t ModeOf(const std::string& name) const { return StatusOf(name).st_mode & 07777; }

    /// The names in the folder, in order.
    std::vector<std::string> Names(const std::string& folder = ".") const
    {
        std::vector<std::string> names;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder_.Path(folder)))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    std::string FolderName() const { return fs::path(folder_.Path()).filename().string(); }

    ScratchFolder folder_;
    CallLog log_;

private:
    mode_t mask_;
};

} // namespace

TEST_F(Replacement, AMissingFileIsMadeWith0644LessTheUmaskOrTheGivenBits)
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

TEST_F(Replacement, ARegularFileIsReplacedAndKeepsItsPermissionBits)
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

TEST_F(Replacement, ARegularFileKeepsItsOwnerAndGroup)
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

TEST_F(Replacement, BytesOfEveryKindAndLengthAreWritten)
{
    const std::string all = std::string("\0\xFF\r\n", 4) + std::string(5 << 20, 'x');
    for (const std::string& bytes : {all, std::string(), all.substr(0, 4)}) {
        EXPECT_TRUE(Replace("file", bytes));
        EXPECT_EQ(Get("file"), bytes);
    }
}

TEST_F(Replacement, EqualBytesMoveTheModificationTimeAlone)
{
    for (const std::string& bytes : {std::string(), std::string("bytes\n")}) {
        Put("file", bytes);
        Link("link", "file");
        ASSERT_EQ(chmod(folder_.Path("file").c_str(), 0440), 0);
        const timespec old[2] = {{1000, 0}, {1000, 0}};
        const ino_t number = StatusOf("file").st_ino;
        for (const char* name : {"file", "link"}) {
            ASSERT_EQ(utimensat(AT_FDCWD, folder_.Path("file").c_str(), old, 0), 0);
            callLog = &log_;
            EXPECT_TRUE(Replace(name, bytes));
            callLog = nullptr;
            EXPECT_THAT(log_.calls, IsEmpty());
            EXPECT_EQ(StatusOf("file").st_ino, number);
            EXPECT_GT(StatusOf("file").st_mtim.tv_sec, 1000);
            EXPECT_EQ(ModeOf("file"), 0440u);
        }
        fs::remove(folder_.Path("link"));
        fs::remove(folder_.Path("file"));
    }
}

TEST_F(Replacement, BytesThatDifferInOnePlaceAreWritten)
{
    Put("file", "bytes");
    for (const char* bytes : {"bytez", "Bytez", "Byte", "Bytes", ""}) {
        const ino_t number = StatusOf("file").st_ino;
        EXPECT_TRUE(Replace("file", bytes));
        EXPECT_NE(StatusOf("file").st_ino, number) << bytes;
        EXPECT_EQ(Get("file"), bytes);
    }
}

TEST_F(Replacement, AnotherNameOfTheFileKeepsTheOldBytes)
{
    Put("file", "old");
    fs::create_hard_link(folder_.Path("file"), folder_.Path("other name"));
    EXPECT_TRUE(Replace("file", "new"));
    EXPECT_EQ(Get("file"), "new");
    EXPECT_EQ(Get("other name"), "old");
}

TEST_F(Replacement, ALinkStaysALinkAndTheFileThatItNamesIsReplaced)
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

TEST_F(Replacement, ALinkToAMissingFileMakesThatFile)
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

TEST_F(Replacement, AnotherUsersLinkInAStickyFolderIsReplacedItself)
{
    Put("target", "untouched");
    Link("foreign", "target");
    Link("chain", "foreign");
    Link("own", "target");
    ASSERT_EQ(chmod(folder_.Path().c_str(), 01777), 0);
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
}

TEST_F(Replacement, AnotherUsersLinkInAnOrdinaryFolderIsFollowed)
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

TEST_F(Replacement, WhatIsNoRegularFileIsNotReplaced)
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

TEST_F(Replacement, APathWithoutAFolderFails)
{
    Put("file", "x");
    for (const char* name : {"missing/file", "file/below", "file/", "missing/"})
        EXPECT_FALSE(Replace(name, "new")) << name;
    EXPECT_FALSE(ReplaceFile("", "new"));
    EXPECT_THAT(Names(), ElementsAre("file"));
    EXPECT_EQ(Get("file"), "x");
}

TEST_F(Replacement, ANameTooLongForItsTemporaryFileFailsAndStaysAsItWas)
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

TEST_F(Replacement, AStaleTemporaryFileIsRemovedAndNoLinkIsFollowedThroughIt)
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

TEST_F(Replacement, AFolderWithTheTemporaryNameMakesTheSaveFail)
{
    Put("file", "old");
    Put("file.kestrune-new/inner", "x");
    EXPECT_FALSE(Replace("file", "new"));
    EXPECT_EQ(Get("file"), "old");
    EXPECT_EQ(Get("file.kestrune-new/inner"), "x");
}

TEST_F(Replacement, ASizeLimitIsAFailedSave)
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

TEST_F(Replacement, AReadOnlyFolderIsAFailedSave)
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

TEST_F(Replacement, TheNewBytesAreOnTheDeviceBeforeTheRename)
{
    Put("file", "old");
    callLog = &log_;
    EXPECT_TRUE(Replace("file", "new"));
    callLog = nullptr;
    EXPECT_THAT(log_.calls, ElementsAre("write file.kestrune-new", "fchmod file.kestrune-new",
                                        "fsync file.kestrune-new", "rename file"));
    EXPECT_FALSE(log_.isAnyInheritable) << "every descriptor is close-on-exec";
    EXPECT_FALSE(log_.isAnyReadableByOthers) << "until its content is complete";
}

TEST_F(Replacement, EachFailingCallLeavesTheOldFileAndNoTemporaryFile)
{
    for (int failing = 0; failing < 4; ++failing) {
        for (const bool exists : {true, false}) {
            fs::remove(folder_.Path("file"));
            if (exists)
                Put("file", "old");
            log_ = CallLog();
            log_.failing = failing;
            callLog = &log_;
            EXPECT_FALSE(Replace("file", "new"));
            callLog = nullptr;
            EXPECT_EQ(log_.calls.size(), static_cast<std::size_t>(failing) + 1) << "nothing is tried after it";
            EXPECT_EQ(Names(), exists ? std::vector<std::string>{"file"} : std::vector<std::string>()) << failing;
            if (exists) {
                EXPECT_EQ(Get("file"), "old") << failing;
            }
        }
    }
}

TEST_F(Replacement, AnOwnerThatCannotBeKeptIsAFailedSave)
{
    Put("file", "old");
    if (chown(folder_.Path("file").c_str(), 1234, 4321) != 0)
        GTEST_SKIP() << "only root can give a file to another user";
    log_.failing = 1;
    callLog = &log_;
    EXPECT_FALSE(Replace("file", "new"));
    callLog = nullptr;
    EXPECT_THAT(log_.calls, ElementsAre("write file.kestrune-new", "fchown file.kestrune-new"));
    EXPECT_EQ(Get("file"), "old");
    EXPECT_THAT(Names(), ElementsAre("file"));
}

TEST_F(Replacement, AFileOfUnknownOwnerTakesNoPlace)
{
    Put("file", "old");
    log_.isStatusUnknown = true;
    callLog = &log_;
    EXPECT_FALSE(Replace("file", "new"));
    EXPECT_FALSE(Replace("file", "dlo")) << "of the old file's size, which cannot be read to compare it";
    FlushForeignFile(folder_.Path("file").c_str());
    callLog = nullptr;
    EXPECT_THAT(log_.calls, ElementsAre("write file.kestrune-new", "write file.kestrune-new"));
    EXPECT_EQ(Get("file"), "old");
    EXPECT_THAT(Names(), ElementsAre("file"));
}

TEST_F(Replacement, ARunCutAfterAnyCallLeavesTheOldFileWholeOrTheNewOneWhole)
{
    const std::string oldBytes(100000, 'o');
    const std::string newBytes(200000, 'n');
    for (int last = 0; last < 4; ++last) {
        Put("file", oldBytes);
        const pid_t child = fork();
        if (child == 0) {
            log_.last = last;
            callLog = &log_;
            (void)Replace("file", newBytes);
            _exit(1);
        }
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_EQ(status, 0) << "the run was not cut at call " << last;
        EXPECT_TRUE(Get("file") == (last == 3 ? newBytes : oldBytes)) << last;

        EXPECT_TRUE(Replace("file", "the next run")) << last;
        EXPECT_EQ(Get("file"), "the next run");
        EXPECT_THAT(Names(), ElementsAre("file"));
    }
}

TEST_F(Replacement, AChangedFolderIsFlushedOnceAndOnlyWhenAskedFor)
{
    Put("deep/unchanged", "same");
    Link("link", "deep/by link");
    callLog = &log_;
    EXPECT_TRUE(Replace("a", "1"));
    EXPECT_TRUE(Replace("b", "2"));
    EXPECT_TRUE(Replace("a", "3"));
    EXPECT_TRUE(Replace("deep/unchanged", "same"));
    log_.calls.clear();
    FlushChangedFolders();
    EXPECT_THAT(log_.calls, ElementsAre("fsync " + FolderName())) << "not the folder where nothing was renamed";

    EXPECT_TRUE(Replace("link", "4"));
    log_.calls.clear();
    FlushChangedFolders();
    EXPECT_THAT(log_.calls, ElementsAre("fsync deep")) << "where the file is, not where the link is";

    log_.calls.clear();
    FlushChangedFolders();
    EXPECT_THAT(log_.calls, IsEmpty());
    EXPECT_FALSE(log_.isAnyInheritable);
}

TEST_F(Replacement, AFolderThatIsGoneIsNoReasonToStop)
{
    Put("deep/other", "");
    EXPECT_TRUE(Replace("deep/file", "1"));
    EXPECT_TRUE(Replace("file", "1"));
    fs::remove_all(folder_.Path("deep"));
    callLog = &log_;
    FlushChangedFolders();
    EXPECT_THAT(log_.calls, ElementsAre("fsync " + FolderName()));
}

TEST_F(Replacement, AFileIsRemovedWhenItsCopyIsOnTheDevice)
{
    Put("original", "x");
    Put("deep/other", "");
    EXPECT_TRUE(Replace("deep/copy", "x"));
    callLog = &log_;
    EXPECT_TRUE(RemoveFile(folder_.Path("original").c_str()));
    // Its own folder too: a copy there may be that of a run which was killed before it flushed.
    EXPECT_THAT(log_.calls, UnorderedElementsAre("fsync " + FolderName(), "fsync deep", "remove original"));
    EXPECT_EQ(log_.calls.back(), "remove original");
    log_.calls.clear();
    FlushChangedFolders();
    EXPECT_THAT(log_.calls, ElementsAre("fsync " + FolderName())) << "the folder that lost it";
    callLog = nullptr;
    EXPECT_THAT(Names(), ElementsAre("deep"));
}

TEST_F(Replacement, RemovingALinkLeavesWhatItNamesAndAMissingFileFails)
{
    Put("target", "x");
    Link("link", "target");
    EXPECT_TRUE(RemoveFile(folder_.Path("link").c_str()));
    EXPECT_THAT(Names(), ElementsAre("target"));
    EXPECT_FALSE(RemoveFile(folder_.Path("missing").c_str()));
    EXPECT_FALSE(RemoveFile(folder_.Path("missing/file").c_str()));
    EXPECT_FALSE(RemoveFile(""));
}

TEST_F(Replacement, AForeignFileIsFlushedWithItsFolder)
{
    Put("deep/copied.pem", "x");
    callLog = &log_;
    FlushForeignFile(folder_.Path("deep/copied.pem").c_str());
    EXPECT_THAT(log_.calls, ElementsAre("fsync copied.pem", "fsync deep"));
    EXPECT_FALSE(log_.isAnyInheritable);
}

TEST_F(Replacement, WhatIsNoForeignFileIsNotFlushedOrWaitedFor)
{
    Put("file", "x");
    ASSERT_EQ(mkfifo(folder_.Path("pipe").c_str(), 0600), 0);
    Link("loop", "loop");
    Link("to pipe", "pipe");
    callLog = &log_;
    for (const char* name : {"", "missing", "missing/file", "file/below", "pipe", "to pipe", "loop"}) {
        FlushForeignFile(folder_.Path(name).c_str());
        EXPECT_THAT(log_.calls, IsEmpty()) << name;
    }
    FlushForeignFile("");
    FlushForeignFile("/dev/null");
    EXPECT_THAT(log_.calls, IsEmpty());
}
