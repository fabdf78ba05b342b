// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The outputs while their readers are stalled: the length of the wait, and the bytes that arrive all the same. Waits
// are counted instead of executed.

#include "standardOutput.h"

#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "boundedOutput.h"

namespace
{

int waitedMilliseconds = 0;
std::function<void()> whileWaiting = [] {};

} // namespace

/// Does not wait, but executes the actions of another process that happen meanwhile.
extern "C" int poll(pollfd* descriptors, nfds_t count, int milliseconds)
{
    const timespec noTime = {0, 0};
    const int ready = static_cast<int>(syscall(SYS_ppoll, descriptors, count, &noTime, nullptr, 0));
    if (ready != 0)
        return ready;
    waitedMilliseconds += milliseconds;
    whileWaiting();
    return static_cast<int>(syscall(SYS_ppoll, descriptors, count, &noTime, nullptr, 0));
}

namespace
{

constexpr int kMostMilliseconds = 10'000;
constexpr unsigned kSecondsUntilItHangs = 10;

struct Pipe {
    Pipe() { EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0); }
    ~Pipe()
    {
        (void)close(ends[0]);
        (void)close(ends[1]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    void FillUp() const
    {
        const int flags = fcntl(ends[1], F_GETFL);
        (void)fcntl(ends[1], F_SETFL, flags | O_NONBLOCK);
        while (write(ends[1], "x", 1) == 1) {
        }
        (void)fcntl(ends[1], F_SETFL, flags);
    }

    /// What is in the pipe.
    std::string Drain() const
    {
        (void)fcntl(ends[0], F_SETFL, O_NONBLOCK);
        std::string bytes(1 << 20, '\0');
        const ssize_t count = read(ends[0], bytes.data(), bytes.size());
        bytes.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
        return bytes;
    }

    int ends[2] = {-1, -1};
};

/// Runs the steps in a separate process, since the waiting time is counted per process.
///
/// @return their result, which is 0 on success; 128 and more if a signal ended them, such as that of the alarm
int InChild(const std::function<int()>& steps)
{
    const pid_t child = fork();
    if (child == 0) {
        (void)alarm(kSecondsUntilItHangs);
        std::exit(steps());
    }
    int status = 0;
    if (waitpid(child, &status, 0) != child)
        return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace

TEST(StandardOutput, WhatIsPrintedArrivesInItsOrderAtTheEndOfTheProcess)
{
    const Pipe pipe;
    const int result = InChild([&] {
        (void)dup2(pipe.ends[1], STDOUT_FILENO);
        std::fputs("first,", StandardOutput());
        (void)std::fflush(StandardOutput());
        if (write(STDOUT_FILENO, "second,", 7) != 7)
            return -1;
        std::fprintf(StandardOutput(), "%s%d\n", std::string(20000, 'x').c_str(), 3);
        return waitedMilliseconds;
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(pipe.Drain(), "first,second," + std::string(20000, 'x') + "3\n");
}

TEST(StandardOutput, AReaderThatStandsStillIsWaitedForTenSecondsInAll)
{
    const Pipe pipe;
    pipe.FillUp();
    const int result = InChild([&] {
        (void)dup2(pipe.ends[1], STDOUT_FILENO);
        for (int i = 0; i < 60; ++i) {
            std::fputs(std::string(1023, 'y').c_str(), StandardOutput());
            std::fputs("\n", StandardOutput());
            (void)std::fflush(StandardOutput());
        }
        return waitedMilliseconds == kMostMilliseconds ? 0 : 1;
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(pipe.Drain().find('y'), std::string::npos);
}

TEST(StandardOutput, BothOutputsTogetherAreWaitedForTenSeconds)
{
    const Pipe output;
    const Pipe errors;
    output.FillUp();
    errors.FillUp();
    const int result = InChild([&] {
        for (int i = 0; i < 10; ++i) {
            WriteWithinBounds(output.ends[1], "output\n");
            WriteWithinBounds(errors.ends[1], "report\n");
        }
        return waitedMilliseconds == kMostMilliseconds ? 0 : 1;
    });
    EXPECT_EQ(result, 0);
}

TEST(StandardOutput, AReaderThatReadsAtLastMissesNothing)
{
    const Pipe pipe;
    pipe.FillUp();
    const int result = InChild([&] {
        std::string received;
        int waits = 0;
        whileWaiting = [&] {
            if (++waits % 100 == 0)
                received += pipe.Drain();
        };
        std::string text;
        for (int i = 0; i < 40000; ++i)
            text += std::to_string(i) + ",";
        WriteWithinBounds(pipe.ends[1], text);
        received += pipe.Drain();
        received.erase(0, received.find_first_not_of('x'));
        return received != text ? 1 : waitedMilliseconds >= kMostMilliseconds ? 2 : 0;
    });
    EXPECT_EQ(result, 0);
}

TEST(StandardOutput, AReaderThatReadsAfterTheTenSecondsGetsWhatThereIsRoomFor)
{
    const Pipe pipe;
    pipe.FillUp();
    const int result = InChild([&] {
        WriteWithinBounds(pipe.ends[1], "lost");
        (void)pipe.Drain();
        WriteWithinBounds(pipe.ends[1], "kept");
        return pipe.Drain() == "kept" ? 0 : 1;
    });
    EXPECT_EQ(result, 0);
}

TEST(StandardOutput, ATerminalWhoseReaderStandsStillIsWaitedForToo)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (terminal < 0 || grantpt(terminal) != 0 || unlockpt(terminal) != 0)
        GTEST_SKIP() << "no terminals here";
    const int line = open(ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(line, 0);
    const int result = InChild([line] {
        for (int i = 0; i < 100; ++i)
            WriteWithinBounds(line, std::string(3000, 'y') + "\n");
        return waitedMilliseconds == kMostMilliseconds ? 0 : 1;
    });
    EXPECT_EQ(result, 0) << "142: it waited without end";
    (void)close(line);
    (void)close(terminal);
}

TEST(StandardOutput, AnOutputThatFailsIsNotWaitedFor)
{
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    const int result = InChild([full] {
        WriteWithinBounds(full, std::string(100000, 'y'));
        (void)close(full);
        WriteWithinBounds(full, "y");
        return waitedMilliseconds == 0 ? 0 : 1;
    });
    EXPECT_EQ(result, 0);
    (void)close(full);
}
