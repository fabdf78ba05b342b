// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Traces: the levels that are written, their form, and that they are complete.

#include "trace.h"

#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

using ETL_TraceHelper::chTraceStack;
using ETL_TraceHelper::etlTrace;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace
{

class Trace : public testing::Test
{
protected:
    Trace() { (void)unsetenv("ETL_TRACE_LEVEL"); }
    ~Trace() override { (void)unsetenv("ETL_TRACE_LEVEL"); }
};

std::string TextOf(void (*report)())
{
    CaptureStderr();
    report();
    return GetCapturedStderr();
}

/// The levels from 1 to 9 at which a trace is written.
std::string LevelsWritten()
{
    std::string levels;
    for (int level = 1; level <= 9; ++level) {
        CaptureStderr();
        etlTrace(level, "text");
        const std::string digit = std::to_string(level);
        const std::string written = GetCapturedStderr();
        if (written.empty())
            continue;
        EXPECT_EQ(written, "etlTrace " + digit + ": text\n");
        levels += digit;
    }
    return levels;
}

std::string ScopeTrace()
{
    return TextOf([] { const chTraceStack scope("Pass"); });
}

} // namespace

TEST_F(Trace, TheLevelSettingIsTheHighestThatIsWritten)
{
    struct Row {
        const char* setting; // null: not set
        const char* levels;
        bool hasScopes;
    };
    const Row rows[] = {
        {nullptr, "123", true}, {"", "123", true},        {"3", "123", true},
        {"0", "", false},       {"1", "1", true},         {"2", "12", true},
        {"4", "1234", true},    {"9", "123456789", true}, {"99999999999", "123456789", true},
        {" 2 ", "12", true},    {"-1", "", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.setting == nullptr ? "(not set)" : row.setting);
        if (row.setting == nullptr)
            (void)unsetenv("ETL_TRACE_LEVEL");
        else
            (void)setenv("ETL_TRACE_LEVEL", row.setting, /*replace=*/1);
        EXPECT_EQ(LevelsWritten(), row.levels);
        EXPECT_EQ(ScopeTrace(), row.hasScopes ? "chTraceStack: enter Pass\nchTraceStack: leave Pass\n" : "");
    }
}

TEST_F(Trace, ATextGetsALineFeedUnlessItEndsInOne)
{
    EXPECT_EQ(TextOf([] { etlTrace(2, "The file [%s] is not found !!", "/config/data/x.xml"); }),
              "etlTrace 2: The file [/config/data/x.xml] is not found !!\n");
    EXPECT_EQ(TextOf([] { etlTrace(3, "Fail to get encrypt config !!\n"); }),
              "etlTrace 3: Fail to get encrypt config !!\n");
    EXPECT_EQ(TextOf([] { etlTrace(2, "two\nlines\n\n"); }), "etlTrace 2: two\nlines\n\n");
    EXPECT_EQ(TextOf([] { etlTrace(2, "%s", ""); }), "etlTrace 2: \n");
}

TEST_F(Trace, AnArgumentIsNeverAFormat)
{
    EXPECT_EQ(TextOf([] { etlTrace(2, "Encrypt:(%s)->(%s)", "%s%n%d", "100%"); }),
              "etlTrace 2: Encrypt:(%s%n%d)->(100%)\n");
}

TEST_F(Trace, ALongTextComesOutWhole)
{
    const std::string megabyte(1 << 20, 'x');
    for (const std::string& text : {megabyte, megabyte + "%s"}) {
        CaptureStderr();
        etlTrace(2, "<%s>", text.c_str());
        EXPECT_TRUE(GetCapturedStderr() == "etlTrace 2: <" + text + ">\n");
    }
}

TEST_F(Trace, ScopesNest)
{
    CaptureStderr();
    {
        const chTraceStack outer("ContactV4XToV50");
        {
            const chTraceStack inner("GetV4XContactData");
            etlTrace(2, "inside");
        }
        const chTraceStack next("100%s");
    }
    EXPECT_EQ(GetCapturedStderr(), "chTraceStack: enter ContactV4XToV50\n"
                                   "chTraceStack: enter GetV4XContactData\n"
                                   "etlTrace 2: inside\n"
                                   "chTraceStack: leave GetV4XContactData\n"
                                   "chTraceStack: enter 100%s\n"
                                   "chTraceStack: leave 100%s\n"
                                   "chTraceStack: leave ContactV4XToV50\n");
}

TEST_F(Trace, AScopeIsLeftOnEveryWayOut)
{
    const auto pass = [](int way) {
        const chTraceStack scope("Pass");
        if (way == 0)
            return;
        if (way == 1)
            throw std::runtime_error("way out");
    };
    for (int way = 0; way <= 2; ++way) {
        CaptureStderr();
        try {
            pass(way);
        } catch (const std::runtime_error&) {
            EXPECT_EQ(way, 1);
        }
        EXPECT_EQ(GetCapturedStderr(), "chTraceStack: enter Pass\nchTraceStack: leave Pass\n") << way;
    }
}

TEST_F(Trace, AClosedOrFullStandardErrorChangesNothing)
{
    for (const bool isFull : {true, false}) {
        const pid_t child = fork();
        if (child == 0) {
            if (isFull)
                (void)dup2(open("/dev/full", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
            else
                (void)close(STDERR_FILENO);
            {
                const chTraceStack scope("Pass");
                etlTrace(2, "text");
            }
            _exit(7);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 7);
    }
}
