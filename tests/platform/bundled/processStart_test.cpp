// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The process at its start: no core file, and no zone that names a pipe.

#include "processStart.h"

#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "scratchFolder.h"

namespace
{

/// @return the status of a process that has executed the steps, as returned by waitpid
int StatusOfChild(const std::function<int()>& steps)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(steps());
    int status = -1;
    return waitpid(child, &status, 0) == child ? status : -1;
}

} // namespace

TEST(BundledProcessStart, AProcessOfRootLeavesNoCoreFile)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "root's processes only";
    EXPECT_EQ(StatusOfChild([] {
                  PrepareProcess();
                  return prctl(PR_GET_DUMPABLE);
              }),
              0);

    const ScratchFolder folder;
    const int status = StatusOfChild([&folder] {
        rlimit limit = {};
        (void)getrlimit(RLIMIT_CORE, &limit);
        limit.rlim_cur = limit.rlim_max;
        (void)setrlimit(RLIMIT_CORE, &limit);
        if (chdir(folder.Path().c_str()) != 0)
            return 1;
        PrepareProcess();
        std::abort();
        return 0;
    });
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_FALSE(WCOREDUMP(status));
}

TEST(BundledProcessStart, AnotherUsersProcessStaysAsItIs)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can become another user";
    const int status = StatusOfChild([] {
        if (setuid(1234) != 0 || prctl(PR_SET_DUMPABLE, 1) != 0)
            return 1;
        PrepareProcess();
        return prctl(PR_GET_DUMPABLE) == 1 ? 0 : 2;
    });
    EXPECT_EQ(status, 0);
}

TEST(BundledProcessStart, TheZoneIsUnsetAndTheSearchPathStays)
{
    const int status = StatusOfChild([] {
        (void)setenv("TZ", ":/a/pipe", 1);
        (void)setenv("PATH", "/device/bin", 1);
        PrepareProcess();
        return std::getenv("TZ") == nullptr && std::string(std::getenv("PATH")) == "/device/bin" ? 0 : 1;
    });
    EXPECT_EQ(status, 0);
}
