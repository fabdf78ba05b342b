// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The format of configuration files: which lines are sections and keys, and that a change affects only its own bytes.

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "iniFile.h"
#include "scratchFolder.h"

using namespace std::string_literals;

namespace
{

const std::string kMark = "\xEF\xBB\xBF";
const std::string kAbsent = "(absent)";

/// A file of that text, loaded.
struct LoadedFile {
    explicit LoadedFile(const std::string& text)
    {
        WriteBytes(folder.Path("file.ini"), text);
        EXPECT_NE(file->LoadFromFile(folder.Path("file.ini").c_str()), 0);
    }

    std::string Saved() const
    {
        EXPECT_NE(file->SaveToFile(/*path=*/nullptr), 0);
        return ReadBytes(folder.Path("file.ini"));
    }

    ScratchFolder folder;
    std::unique_ptr<iniFile> file = std::make_unique<iniFile>();
};

std::string AfterSetting(const std::string& text, const std::string& section, const std::string& key,
                         const std::string& value)
{
    const LoadedFile loaded(text);
    EXPECT_NE(loaded.file->SetTextValue(section, key, value), 0) << testing::PrintToString(text);
    return loaded.Saved();
}

std::string ValueIn(const std::string& text, const std::string& section, const std::string& key)
{
    return LoadedFile(text).file->GetTextValue(section, key, kAbsent);
}

struct ChangeRow {
    std::string before;
    std::string after; // with "k" of section "S" set to "new"
};

void ExpectChanges(const std::vector<ChangeRow>& rows)
{
    for (const ChangeRow& row : rows)
        EXPECT_EQ(AfterSetting(row.before, "S", "k", "new"), row.after) << testing::PrintToString(row.before);
}

} // namespace

TEST(IniFormat, AChangeTouchesTheBytesOfTheValueAlone)
{
    ExpectChanges({
        // Line ends.
        {"[S]\nk=old\nx=1\n", "[S]\nk=new\nx=1\n"},
        {"[S]\r\nk=old\r\nx=1\r\n", "[S]\r\nk=new\r\nx=1\r\n"},
        {"[S]\nk=old\r\nx=1\n\r\n", "[S]\nk=new\r\nx=1\n\r\n"},
        {"[S]\r\nk=old\nx=1", "[S]\r\nk=new\nx=1"},
        {"[S]\nx=1\nk=old", "[S]\nx=1\nk=new"},
        {"[S]\nk=old\r\r\n", "[S]\nk=new\r\n"},
        {"[S]\nk=o\rx=1\n", "[S]\nk=new\n"},
        {"[S]\nk=old\r", "[S]\nk=new"},
        // Byte order mark: only one, only whole, only at the start.
        {kMark + "[S]\nk=old\n", kMark + "[S]\nk=new\n"},
        {kMark + kMark + "[S]\nk=1\n[S]\nk=old\n", kMark + kMark + "[S]\nk=1\n[S]\nk=new\n"},
        {"\xEF\xBB[S]\nk=1\n[S]\nk=old\n", "\xEF\xBB[S]\nk=1\n[S]\nk=new\n"},
        {"\n" + kMark + "[S]\nk=1\n[S]\nk=old\n", "\n" + kMark + "[S]\nk=1\n[S]\nk=new\n"},
        // Any byte is kept.
        {"\0\xFF\n[S]\n\0=\xFF\0\nk=o\0ld\n\xC3\x28=\x80\n"s, "\0\xFF\n[S]\n\0=\xFF\0\nk=new\n\xC3\x28=\x80\n"s},
        {"[S]\n\0k=1\nk\0=2\nk=old\n"s, "[S]\n\0k=1\nk\0=2\nk=new\n"s},
        // Blanks and "=".
        {"[S]\n \tk\t =  old  \n", "[S]\n \tk\t =  new\n"},
        {"[S]\nk= \t\n", "[S]\nk= \tnew\n"},
        {"[S]\nk=\n", "[S]\nk=new\n"},
        {"[S]\nk=", "[S]\nk=new"},
        {"[S]\nk=a=b = c\n", "[S]\nk=new\n"},
        {"[S]\nk==old\n", "[S]\nk=new\n"},
        {"[S]\n=1\n \t=2\nk\nk=old\n", "[S]\n=1\n \t=2\nk\nk=new\n"},
        {"[S]\n\vk=1\nk\v=2\nk=old\n", "[S]\n\vk=1\nk\v=2\nk=new\n"},
        // Quotes and comments.
        {"[S]\n\"k\"=1\nk=\"old\"\n", "[S]\n\"k\"=1\nk=new\n"},
        {"[S]\n;k=1\n#k=2\n \t; k=3\n\t#k=4\nk=old\n", "[S]\n;k=1\n#k=2\n \t; k=3\n\t#k=4\nk=new\n"},
        {"[S]\nk=old ; note # note\n", "[S]\nk=new\n"},
    });
}

TEST(IniFormat, AChangeTouchesTheFirstKeyOfThatNameAlone)
{
    ExpectChanges({
        // Names match byte for byte.
        {"[s]\nk=1\n[S ]\nk=2\n[ S]\nk=3\n[S]\nK=4\nkk=5\nk=old\n",
         "[s]\nk=1\n[S ]\nk=2\n[ S]\nk=3\n[S]\nK=4\nkk=5\nk=new\n"},
        // Section lines.
        {" \t[S]\nk=old\n", " \t[S]\nk=new\n"},
        {"[S] ; rest ] [T]\nk=old\n", "[S] ; rest ] [T]\nk=new\n"},
        {"[S]k=1\nk=old\n", "[S]k=1\nk=new\n"},
        {"[S]]\nk=old\n", "[S]]\nk=new\n"},
        {"[[S]\nk=1\n[S]\nk=old\n", "[[S]\nk=1\n[S]\nk=new\n"},
        {"[S\nk=1\n[S]\nk=old\n", "[S\nk=1\n[S]\nk=new\n"},
        {"[S]\n[T\n]T[\nT]\n[U=1\nk=old\n", "[S]\n[T\n]T[\nT]\n[U=1\nk=new\n"},
        {";[S]\nk=1\n[]\nk=2\n[S]\nk=old\n", ";[S]\nk=1\n[]\nk=2\n[S]\nk=new\n"},
        {"[S]\nx=1\n[k=old]\nk=1\n[S]\nk=old\n", "[S]\nx=1\n[k=old]\nk=1\n[S]\nk=new\n"},
        // Duplicates, and keys before a section.
        {"[S]\nk=old\nk=2\n[S]\nk=3\n", "[S]\nk=new\nk=2\n[S]\nk=3\n"},
        {"[S]\nx=1\n[T]\nk=1\n[S]\nk=old\nk=2\n", "[S]\nx=1\n[T]\nk=1\n[S]\nk=new\nk=2\n"},
        {"k=1\n[S]\nk=old\n", "k=1\n[S]\nk=new\n"},
    });
}

TEST(IniFormat, LinesOfAMegabyteAreLinesLikeAnyOther)
{
    const std::string megabyte(1 << 20, 'x');
    ExpectChanges({
        {"[S]\nk=" + megabyte + "\ny=1\n", "[S]\nk=new\ny=1\n"},
        {"[S]\n" + megabyte + "=1\nk=old\n", "[S]\n" + megabyte + "=1\nk=new\n"},
        {";" + megabyte + "\n[S]\n[" + megabyte + "\nk=old\n", ";" + megabyte + "\n[S]\n[" + megabyte + "\nk=new\n"},
        {"[S]" + megabyte, "[S]" + megabyte + "\nk=new\n"},
    });
    EXPECT_EQ(AfterSetting("[S]\nk=old\n", "S", "k", megabyte), "[S]\nk=" + megabyte + "\n");
    EXPECT_EQ(ValueIn("[S]\nk=" + megabyte + "\n", "S", "k"), megabyte);
}

TEST(IniFormat, AnAddedKeyGoesBehindTheLastKeyOfTheFirstSectionOfThatName)
{
    ExpectChanges({
        {"[S]\n", "[S]\nk=new\n"},
        {"[S]", "[S]\nk=new\n"},
        {kMark + "[S]", kMark + "[S]\nk=new\n"},
        {"[S]\nx=1\n", "[S]\nx=1\nk=new\n"},
        {"[S]\nx=1", "[S]\nx=1\nk=new\n"},
        {"[S]\nx=1\n; note\n\nno key\n[T]\nk=2\n", "[S]\nx=1\nk=new\n; note\n\nno key\n[T]\nk=2\n"},
        {"[S]\nx=1\n; note", "[S]\nx=1\nk=new\n; note"},
        {"[S]\n; note\n\n[T]\nk=2\n", "[S]\nk=new\n; note\n\n[T]\nk=2\n"},
        {"[S] rest\n[T]\n", "[S] rest\nk=new\n[T]\n"},
        {"[S]\n[T]\n[S]\nx=1\n", "[S]\nk=new\n[T]\n[S]\nx=1\n"},
        {"k=1\n[T]\nk=1\n[S]\n;k=1\n", "k=1\n[T]\nk=1\n[S]\nk=new\n;k=1\n"},
        {"[S]\n[x=1\n\n[T]\n", "[S]\n[x=1\nk=new\n\n[T]\n"},
        // The blanks around "=" are those of the key line before; blanks in front of a name are not copied.
        {"[S]\nx = 1\n", "[S]\nx = 1\nk = new\n"},
        {"[S]\nx\t=1\n", "[S]\nx\t=1\nk\t=new\n"},
        {"[S]\nx=  1\n", "[S]\nx=  1\nk=  new\n"},
        {"[S]\nx = 1\ny=1\n", "[S]\nx = 1\ny=1\nk=new\n"},
        {"[S]\nx=1\n; y = 1\n", "[S]\nx=1\nk=new\n; y = 1\n"},
        {"[S]\n\t x=1\n", "[S]\n\t x=1\nk=new\n"},
        {"x = 1\n[T]\nx = 1\n[S]\n", "x = 1\n[T]\nx = 1\n[S]\nk=new\n"},
        // The line has the line end of the file's first line.
        {"[S]\r\n", "[S]\r\nk=new\r\n"},
        {"[S]\r\nx=1", "[S]\r\nx=1\r\nk=new\r\n"},
        {"[S]\nx=1\r\n", "[S]\nx=1\r\nk=new\n"},
        {"\r\n[S]\nx=1\n", "\r\n[S]\nx=1\nk=new\r\n"},
        {"\n[S]\r\nx=1\r\n", "\n[S]\r\nx=1\r\nk=new\n"},
        {kMark + "\r\n[S]\n", kMark + "\r\n[S]\nk=new\r\n"},
        {";\r\r\n[S]", ";\r\r\n[S]\r\nk=new\r\n"},
    });
}

TEST(IniFormat, AnAddedSectionGoesToTheEndBehindABlankLine)
{
    ExpectChanges({
        {"", "[S]\nk=new\n"},
        {kMark, kMark + "[S]\nk=new\n"},
        {"[T]\nx=1\n", "[T]\nx=1\n\n[S]\nk=new\n"},
        {"[T]\nx=1", "[T]\nx=1\n\n[S]\nk=new\n"},
        {kMark + ";", kMark + ";\n\n[S]\nk=new\n"},
        {"k=1\n", "k=1\n\n[S]\nk=new\n"},
        {"[T]\nx = 1\n", "[T]\nx = 1\n\n[S]\nk=new\n"},
        {"[S\n", "[S\n\n[S]\nk=new\n"},
        // A blank line already exists.
        {"\n", "\n[S]\nk=new\n"},
        {" \t", " \t\n[S]\nk=new\n"},
        {kMark + "\n", kMark + "\n[S]\nk=new\n"},
        {kMark + " ", kMark + " \n[S]\nk=new\n"},
        {"[T]\nx=1\n\n", "[T]\nx=1\n\n[S]\nk=new\n"},
        {"[T]\nx=1\n \t\n", "[T]\nx=1\n \t\n[S]\nk=new\n"},
        {"[T]\nx=1\n  ", "[T]\nx=1\n  \n[S]\nk=new\n"},
        {"[T]\nx=1\n\r\n", "[T]\nx=1\n\r\n[S]\nk=new\n"},
        {"[T]\nx=1\n\n\n", "[T]\nx=1\n\n\n[S]\nk=new\n"},
        // Line ends.
        {"[T]\r\nx=1\r\n", "[T]\r\nx=1\r\n\r\n[S]\r\nk=new\r\n"},
        {"[T]\r\nx=1", "[T]\r\nx=1\r\n\r\n[S]\r\nk=new\r\n"},
        {"[T]\nx=1\r\n", "[T]\nx=1\r\n\n[S]\nk=new\n"},
        {"\r\n", "\r\n[S]\r\nk=new\r\n"},
    });
}

TEST(IniFormat, AReturnInsideAValueIsStored)
{
    for (const std::string value : {"a\rb", "\rb", "a\r\rb", "\r \r;"}) {
        const LoadedFile loaded("[S]\nk=old\nx=1\n");
        EXPECT_NE(loaded.file->SetTextValue("S", "k", value), 0) << testing::PrintToString(value);
        EXPECT_EQ(loaded.file->GetTextValue("S", "k", kAbsent), value);
        EXPECT_EQ(loaded.Saved(), "[S]\nk=" + value + "\nx=1\n");
    }
}

TEST(IniFormat, WhatTheFormatCannotHoldIsRefusedAndChangesNothing)
{
    struct Row {
        std::string section;
        std::string key;
        std::string value;
    };
    const Row rows[] = {
        {"", "k", "v"},     {"S]", "k", "v"},     {"]", "k", "v"},   {"S\r", "k", "v"}, {"S\nT", "k", "v"},
        {"S\0"s, "k", "v"}, {"S", "", "v"},       {"S", "k=", "v"},  {"S", "=", "v"},   {"S", "a=b", "v"},
        {"S", "k\r", "v"},  {"S", "k\n", "v"},    {"S", "\0"s, "v"}, {"S", " k", "v"},  {"S", "\tk", "v"},
        {"S", "k ", "v"},   {"S", "k\t", "v"},    {"S", " ", "v"},   {"S", "[k", "v"},  {"S", "[", "v"},
        {"S", ";k", "v"},   {"S", "#", "v"},      {"S", "k", "v\r"}, {"S", "k", "\n"},  {"S", "k", "a\r\nb"},
        {"S", "k", "\0"s},  {"S", "k", "a\0b"s},  {"S", "x", "1\n"}, {"S", "[x", "v"},  {"new", "k", "\r"},
        {"S", "k", "\r\r"}, {"S", "k", "a\rb\r"},
    };
    for (const std::string& before : {""s, "[S]\nk=old\nx=1"s, "[S]\n[x=1\n[]\nk=1\n\n"s}) {
        for (const Row& row : rows) {
            const LoadedFile loaded(before);
            EXPECT_EQ(loaded.file->SetTextValue(row.section, row.key, row.value), 0)
                << testing::PrintToString(row.section) << testing::PrintToString(row.key)
                << testing::PrintToString(row.value);
            EXPECT_EQ(loaded.Saved(), before);
        }
    }
}

TEST(IniFormat, GivesTheTextBehindTheEqualsSignLessTheBlanksThatLeadIt)
{
    struct Row {
        std::string text;
        std::string expected; // value of "k" in section "S"
    };
    const Row rows[] = {
        {"", kAbsent},
        {kMark, kAbsent},
        {"k=1\n", kAbsent},
        {"[S]\n", kAbsent},
        {"[T]\nk=1\n", kAbsent},
        {"[S]\nk\n", kAbsent},
        {"[S]\nk:1\n", kAbsent},
        {"[S]\n;k=1\n", kAbsent},
        {"[S]\nk=1\n", "1"},
        {"[S]\nk=\n", ""},
        {"[S]\nk= \t\n", ""},
        {"[S]\nk=", ""},
        {"[S]\nk=1", "1"},
        {"[S]\nk=1\r", "1\r"},
        {"[S]\r\nk=1\r\n", "1"},
        {"[S]\r\nk=1\r\r\n", "1\r"},
        {"[S]\nk \t= \t1 \t\n", "1 \t"},
        {"[S]\nk=\v1\n", "\v1"},
        {"[S]\nk=a = b\n", "a = b"},
        {"[S]\nk=\"1\"\n", "\"1\""},
        {"[S]\nk=1 ; no comment # at all\n", "1 ; no comment # at all"},
        {"[S]\nk=;1\n", ";1"},
        {"[S]\nk=a\\\nb\n", "a\\"},
        {"[S]\nk=a\0\xFF\n"s, "a\0\xFF"s},
        {"[S]\nk=1\nk=2\n[S]\nk=3\n", "1"},
        {"[S]\nk=\nk=2\n", ""},
        {"[S]\n[T]\nk=1\n[S]\nk=2\n", "2"},
        {kMark + "[S]\nk=1\n", "1"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(ValueIn(row.text, "S", "k"), row.expected) << testing::PrintToString(row.text);
}

TEST(IniFormat, FindsNamesThatNoChangeWouldTake)
{
    EXPECT_EQ(ValueIn("[S]\n[k=1\n", "S", "[k"), "1");
    EXPECT_EQ(ValueIn("[]\nk=1\n", "", "k"), "1");
    EXPECT_EQ(ValueIn("[S]\nk\0x=1\n"s, "S", "k\0x"s), "1");
    EXPECT_EQ(ValueIn("[S]\nk=1\n", "", "k"), kAbsent);
    EXPECT_EQ(ValueIn("k=1\n", "", "k"), kAbsent);
    EXPECT_EQ(ValueIn("[S]\n=1\n", "S", ""), kAbsent);
}
