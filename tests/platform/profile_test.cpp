// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Whole-file integer access: the profile and the registry pair are equivalent.

#include "profile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "profileFixture.h"

namespace
{

class Profile : public ProfileFixture
{
};

INSTANTIATE_TEST_SUITE_P(BothPairs, Profile, BothPairs(), [](const auto& row) { return std::string(row.param.name); });

} // namespace

TEST_P(Profile, AReadFromAMissingFileGivesTheDefaultAndMakesNoFile)
{
    EXPECT_EQ(Get("S", "k", 7), 7);
    EXPECT_EQ(GetParam().get(folder_.Path("missing/x.ini").c_str(), "S", "k", -7), -7);
    EXPECT_EQ(rmdir(folder_.Path().c_str()), 0) << "the folder is not empty";
}

TEST_P(Profile, AReadGivesTheNumberOrTheDefault)
{
    struct Row {
        const char* text;
        int expected;
    };
    const Row rows[] = {
        {"", 5},
        {"k=1\n", 5},
        {"[T]\nk=1\n", 5},
        {"[S]\nK=1\n", 5},
        {"[S]\n;k=1\n", 5},
        {"[S]\nk=1\n", 1},
        {"[S]\r\nk = -12 \r\n", -12},
        {"[S]\nk=\n", 0},
        {"[S]\nk=on\n", 0},
        {"[S]\nk=\"1\"\n", 0},
        {"[S]\nk=7 days\n", 7},
        {"[S]\nk=2147483648\n", 2147483647},
        {"[S]\nk=-99999999999999999999\n", -2147483647 - 1},
        {"[S]\n[T]\nk=1\n[S]\nk=2\nk=3\n", 2},
    };
    for (const Row& row : rows) {
        WriteBytes(path_, row.text);
        EXPECT_EQ(Get("S", "k", 5), row.expected) << row.text;
        EXPECT_EQ(ReadBytes(path_), row.text);
    }
}

TEST_P(Profile, AWriteChangesOrAddsTheKeyAndKeepsEveryOtherLine)
{
    struct Row {
        const char* before;
        const char* after;
    };
    const Row rows[] = {
        {"", "[S]\nk=-1\n"},
        {"[S]\nk=5\nx=2\n", "[S]\nk=-1\nx=2\n"},
        {"; note\r\n[S]\r\n#k=0\r\nk = on \r\n", "; note\r\n[S]\r\n#k=0\r\nk = -1\r\n"},
        {"; note\n[S]\nx=2\n\n[T]\nk=3", "; note\n[S]\nx=2\nk=-1\n\n[T]\nk=3"},
        {"[T]\nk=3", "[T]\nk=3\n\n[S]\nk=-1\n"},
    };
    for (const Row& row : rows) {
        WriteBytes(path_, row.before);
        Set("S", "k", -1);
        EXPECT_EQ(ReadBytes(path_), row.after) << row.before;
        EXPECT_EQ(Get("S", "k", 0), -1);
    }
}

TEST_P(Profile, WritingTheSameValueWritesNoData)
{
    WriteBytes(path_, "[S]\nk=1\n");
    const ino_t number = NumberOf(path_);
    Set("S", "k", 1);
    EXPECT_EQ(NumberOf(path_), number);
    EXPECT_EQ(ReadBytes(path_), "[S]\nk=1\n");
}
