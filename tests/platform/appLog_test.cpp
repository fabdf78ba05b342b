// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The application log: its form on standard error.

#include "appLog.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace
{

std::string TextOf(void (*report)())
{
    CaptureStderr();
    report();
    return GetCapturedStderr();
}

} // namespace

TEST(AppLog, StandardErrorShowsModuleLevelAndText)
{
    EXPECT_EQ(TextOf([] { app_log(60, 4, "Can's load user's inifile!\n"); }),
              "app_log 60/4: Can's load user's inifile!\n");
    EXPECT_EQ(TextOf([] { app_log(kAppLogModule, kAppLogInformation, "Sync cert %s\n", "a.pem"); }),
              "app_log 60/6: Sync cert a.pem\n");
    EXPECT_EQ(TextOf([] { app_log(kAppLogModule, kAppLogWarning, "%d%%", -1); }), "app_log 60/4: -1%\n");
    EXPECT_EQ(TextOf([] { app_log(1, 0, "x"); }), "app_log 1/0: x\n");
    EXPECT_EQ(TextOf([] { app_log(60, 7, "%s", ""); }), "app_log 60/7: \n");
    EXPECT_EQ(TextOf([] { app_log(60, 6, "two\nlines\n"); }), "app_log 60/6: two\nlines\n");
}

TEST(AppLog, AnArgumentIsNeverAFormat)
{
    EXPECT_EQ(TextOf([] { app_log(60, 6, "Sync cert %s\n", "%s%n100%"); }), "app_log 60/6: Sync cert %s%n100%\n");
}

TEST(AppLog, ALongTextComesOutWhole)
{
    const std::string megabyte(1 << 20, 'x');
    CaptureStderr();
    app_log(60, 6, "<%s>", megabyte.c_str());
    EXPECT_TRUE(GetCapturedStderr() == "app_log 60/6: <" + megabyte + ">\n");
}

TEST(AppLog, AClosedOrFullStandardErrorChangesNothing)
{
    for (const bool isFull : {true, false}) {
        const pid_t child = fork();
        if (child == 0) {
            if (isFull)
                (void)dup2(open("/dev/full", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
            else
                (void)close(STDERR_FILENO);
            app_log(60, 6, "text");
            _exit(7);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 7);
    }
}
