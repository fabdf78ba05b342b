// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The process at its start: standard descriptors that are closed, and signals that must not end a run.

#include "processStart.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "scratchFolder.h"

namespace
{

/// Runs the steps in a separate process.
///
/// @return their result, which is 0 on success; 128 and more if a signal ended them
int InChild(const std::function<int()>& steps)
{
    const pid_t child = fork();
    if (child == 0) {
        (void)std::signal(SIGPIPE, SIG_DFL);
        (void)std::signal(SIGXFSZ, SIG_DFL);
        _exit(steps());
    }
    int status = 0;
    if (waitpid(child, &status, 0) != child)
        return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

bool IsNullDevice(int descriptor)
{
    struct stat expected = {};
    struct stat found = {};
    return stat("/dev/null", &expected) == 0 && fstat(descriptor, &found) == 0 && S_ISCHR(found.st_mode) &&
           found.st_rdev == expected.st_rdev;
}

} // namespace

TEST(ProcessStart, ClosedStandardDescriptorsAreOpenedOnTheNullDevice)
{
    for (unsigned closed = 0; closed < 8; ++closed) {
        const ScratchFolder folder;
        const std::string path = folder.Path("open before");
        const int result = InChild([closed, &path] {
            const int other = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
            for (int number = 0; number < 3; ++number) {
                if ((closed >> number & 1) != 0)
                    (void)close(number);
                else if (dup2(other, number) != number)
                    return 1;
            }
            PrepareProcess();
            for (int number = 0; number < 3; ++number) {
                if (IsNullDevice(number) != ((closed >> number & 1) != 0))
                    return 10 + number;
                if ((fcntl(number, F_GETFL) & O_ACCMODE) != O_RDWR)
                    return 20 + number;
            }
            return open("/dev/null", O_RDONLY | O_CLOEXEC) > 2 ? 0 : 2; // the next file gets no standard number
        });
        EXPECT_EQ(result, 0) << "closed descriptors, a bit each: " << closed;
    }
}

TEST(ProcessStart, APipeWithoutAReaderIsAFailedWrite)
{
    const auto writeToNobody = [](bool isPrepared) {
        if (isPrepared)
            PrepareProcess();
        int ends[2] = {};
        if (pipe2(ends, O_CLOEXEC) != 0 || close(ends[0]) != 0)
            return 1;
        return write(ends[1], "x", 1) == -1 && errno == EPIPE ? 0 : 2;
    };
    EXPECT_EQ(InChild([&] { return writeToNobody(true); }), 0);
    EXPECT_EQ(InChild([&] { return writeToNobody(false); }), 128 + SIGPIPE) << "what the call is for";
}

TEST(ProcessStart, ASizeLimitIsAFailedWrite)
{
    const ScratchFolder folder;
    const auto writeTooMuch = [&folder](bool isPrepared) {
        if (isPrepared)
            PrepareProcess();
        const rlimit limit = {1, 1};
        const rlimit noCore = {0, 0};
        (void)setrlimit(RLIMIT_CORE, &noCore);
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
            return 1;
        const int file = open(folder.Path("file").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        if (write(file, "x", 1) != 1)
            return 2;
        return write(file, "y", 1) == -1 && errno == EFBIG ? 0 : 3;
    };
    EXPECT_EQ(InChild([&] { return writeTooMuch(true); }), 0);
    EXPECT_EQ(InChild([&] { return writeTooMuch(false); }), 128 + SIGXFSZ) << "what the call is for";
}
