// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The commit record's text: a whole text is parsed to the original record; any other text is refused.

#include "commitRecord.h"

#include <gtest/gtest.h>

namespace
{

CommitRecord ExampleRecord()
{
    CommitRecord record;
    record.mode = "all";
    record.changes = {
        {ChangeKind::Rename, "/config/user/user.ini", SumOf("new"), ""},
        {ChangeKind::Rename, "/config/user/odd name\n\"\xFF.cfg", SumOf(""), ""},
        {ChangeKind::Remove, "/config/user/voip/sipAccount7.cfg", SumOf("account"), "/config/user/voip/directip.cfg"},
        {ChangeKind::RemoveOther, "/config/user/voip/directip.cfg", {}, ""},
        {ChangeKind::Marker, "/config/kestrune-pending", SumOf("2\n"), ""},
    };
    return record;
}

bool IsRecord(std::string_view text)
{
    CommitRecord record;
    return ParseRecord(text, record);
}

/// The text with one field replaced, and a matching checksum.
std::string WithField(std::size_t place, std::string_view field)
{
    const std::string text = TextOf(ExampleRecord());
    std::vector<std::string_view> fields;
    EXPECT_TRUE(CheckAndSplit(text, fields));
    fields[place] = field;
    return WithChecksum(fields);
}

} // namespace

TEST(CommitRecord, ComesBackAsItWasWritten)
{
    const CommitRecord expected = ExampleRecord();
    CommitRecord found;
    ASSERT_TRUE(ParseRecord(TextOf(expected), found));
    EXPECT_EQ(found.mode, "all");
    ASSERT_EQ(found.changes.size(), expected.changes.size());
    auto change = found.changes.begin();
    for (const RecordedChange& wanted : expected.changes) {
        EXPECT_EQ(change->kind, wanted.kind);
        EXPECT_EQ(change->path, wanted.path);
        EXPECT_EQ(change->content.length, wanted.content.length);
        EXPECT_EQ(change->content.sha256, wanted.content.sha256);
        EXPECT_EQ(change->waitsForCopy, wanted.waitsForCopy);
        ++change;
    }
}

TEST(CommitRecord, BearsAModeOfAnyText)
{
    for (const char* mode : {"", "1", "a word\nof two lines", "\xFF"}) {
        CommitRecord record;
        record.mode = mode;
        CommitRecord found;
        ASSERT_TRUE(ParseRecord(TextOf(record), found));
        EXPECT_EQ(found.mode, mode);
    }
}

TEST(CommitRecord, CutAtAnyByteIsNone)
{
    const std::string text = TextOf(ExampleRecord());
    for (std::size_t length = 0; length < text.size(); ++length)
        EXPECT_FALSE(IsRecord(std::string_view(text).substr(0, length))) << length;
    EXPECT_TRUE(IsRecord(text));
    EXPECT_FALSE(IsRecord(text + '\0'));
    EXPECT_FALSE(IsRecord(text + "x"));
}

TEST(CommitRecord, WithAnyByteChangedIsNone)
{
    const std::string text = TextOf(ExampleRecord());
    for (std::size_t place = 0; place < text.size(); ++place) {
        std::string changed = text;
        changed[place] = static_cast<char>(changed[place] ^ 1);
        EXPECT_FALSE(IsRecord(changed)) << place;
    }
}

TEST(CommitRecord, OfAnotherKindOrFormatIsNone)
{
    EXPECT_TRUE(IsRecord(WithField(2, "dev")));
    EXPECT_FALSE(IsRecord(WithField(0, "kestrune-record")));
    EXPECT_FALSE(IsRecord(WithField(1, "2")));
    EXPECT_FALSE(IsRecord(WithField(3, "link")));
    EXPECT_FALSE(IsRecord(WithChecksum({"kestrune-commit", "1"}))) << "no mode";
    EXPECT_FALSE(IsRecord(WithChecksum({"kestrune-commit", "1", "all", "rename", "/path", "0", "sum"})))
        << "a change that lacks a field";
    EXPECT_FALSE(IsRecord(""));
}
