// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// File replacement, call by call: the whole old file or the whole new one, whichever call fails and wherever the run is
// interrupted.

#include "fileReplacement.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "replacementFixture.h"

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

constexpr int kNoCall = -1;

/// Counts the code's changing system calls, and simulates these failures.
struct CallLog {
    std::vector<std::string> calls;
    int failing = kNoCall;              ///< number of the call that fails
    bool isStatusUnknown = false;       ///< whether `fstat` fails
    int last = kNoCall;                 ///< number of the call with which the process ends
    bool isAnyInheritable = false;      ///< whether a descriptor was seen that a child would inherit
    bool isAnyReadableByOthers = false; ///< whether the new bytes were written to a file that others could read
};

CallLog* callLog = nullptr;

std::string NameOf(int descriptor)
{
    return fs::read_symlink("/proc/self/fd/" + std::to_string(descriptor)).filename().string();
}

/// @return true with `errno` set if this call has to fail
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

class BundledFileReplacement : public ReplacementFixture
{
protected:
    ~BundledFileReplacement() override { callLog = nullptr; }

    std::string FolderName() const { return fs::path(folder_.Path()).filename().string(); }

    CallLog log_;
};

} // namespace

TEST_F(BundledFileReplacement, TheNewBytesAreOnTheDeviceBeforeTheRename)
{
    Put("file", "old");
    callLog = &log_;
    EXPECT_TRUE(Replace("file", "new"));
    callLog = nullptr;
    EXPECT_THAT(log_.calls, ElementsAre("write file.kestrune-new", "fchmod file.kestrune-new",
                                        "fsync file.kestrune-new", "rename file", "fsync " + FolderName()));
    EXPECT_FALSE(log_.isAnyInheritable) << "every descriptor is close-on-exec";
    EXPECT_FALSE(log_.isAnyReadableByOthers) << "until its content is complete";
}

TEST_F(BundledFileReplacement, EachFailingCallLeavesTheOldFileAndNoTemporaryFile)
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

TEST_F(BundledFileReplacement, AnOwnerThatCannotBeKeptIsAFailedSave)
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

TEST_F(BundledFileReplacement, AFileOfUnknownOwnerTakesNoPlace)
{
    Put("file", "old");
    log_.isStatusUnknown = true;
    callLog = &log_;
    EXPECT_FALSE(Replace("file", "new"));
    EXPECT_FALSE(Replace("file", "dlo")) << "of the old file's size, which cannot be read to compare it";
    callLog = nullptr;
    EXPECT_THAT(log_.calls, ElementsAre("write file.kestrune-new", "write file.kestrune-new"));
    EXPECT_EQ(Get("file"), "old");
    EXPECT_THAT(Names(), ElementsAre("file"));
}

TEST_F(BundledFileReplacement, ARunCutAfterAnyCallLeavesTheOldFileWholeOrTheNewOneWhole)
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

TEST_F(BundledFileReplacement, TheFolderThatHoldsTheFileIsFlushed)
{
    Put("deep/other", "");
    Link("link", "deep/by link");
    callLog = &log_;
    EXPECT_TRUE(Replace("link", "1"));
    EXPECT_EQ(log_.calls.back(), "fsync deep") << "where the file is, not where the link is";
    EXPECT_FALSE(log_.isAnyInheritable);
}

TEST_F(BundledFileReplacement, ARemovalIsFlushed)
{
    Put("file", "x");
    callLog = &log_;
    EXPECT_TRUE(RemoveFile(folder_.Path("file").c_str()));
    EXPECT_THAT(log_.calls, ElementsAre("remove file", "fsync " + FolderName()));
    log_.calls.clear();
    EXPECT_FALSE(RemoveFile(folder_.Path("file").c_str()));
    EXPECT_THAT(log_.calls, ElementsAre("remove file"));
}

TEST_F(BundledFileReplacement, EqualBytesMakeNoCallThatChangesTheFile)
{
    for (const std::string& bytes : {std::string(), std::string("bytes\n")}) {
        Put("file", bytes);
        callLog = &log_;
        EXPECT_TRUE(Replace("file", bytes));
        callLog = nullptr;
        EXPECT_THAT(log_.calls, IsEmpty());
    }
}
