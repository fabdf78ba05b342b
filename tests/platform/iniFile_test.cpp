// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The in-memory image of a configuration file: loading, walking, changing, saving.

#include "iniFile.h"

#include <gtest/gtest.h>
#include <random>

#include "iniFileFixture.h"

using namespace std::string_literals;

namespace
{

iniKey& KeyAt(iniFile& file, int sectionNumber, int keyNumber)
{
    auto* node = file.objects()->get_pNext();
    for (int i = 0; i < sectionNumber; ++i)
        node = node->get_pNext();
    node = static_cast<iniSection*>(node)->objects()->get_pNext();
    for (int i = 0; i < keyNumber; ++i)
        node = node->get_pNext();
    return *static_cast<iniKey*>(node);
}

class IniFile : public IniFileFixture
{
};

} // namespace

TEST_F(IniFile, AReadGivesTheValueOrTheDefault)
{
    Load("k=0\n[S]\nk=text\nempty=\nn=-12\nwide=4294967296\nword=on\nnul=1\0002\n"s);
    EXPECT_EQ(file_.GetTextValue("S", "k", "default"), "text");
    EXPECT_EQ(file_.GetTextValue("S", "empty", "default"), "");
    EXPECT_EQ(file_.GetTextValue("S", "absent", "default"), "default");
    EXPECT_EQ(file_.GetTextValue("s", "k", "default"), "default");
    EXPECT_EQ(file_.GetTextValue("", "k", "default"), "default");
    EXPECT_EQ(file_.GetTextValue("S", "nul", "default"), "1\0002"s);

    EXPECT_EQ(file_.GetIntValue("S", "n", 5), -12);
    EXPECT_EQ(file_.GetIntValue("S", "wide", 5), 2147483647);
    EXPECT_EQ(file_.GetIntValue("S", "word", 5), 0);
    EXPECT_EQ(file_.GetIntValue("S", "empty", 5), 0);
    EXPECT_EQ(file_.GetIntValue("S", "nul", 5), 1);
    EXPECT_EQ(file_.GetIntValue("S", "absent", 5), 5);
    EXPECT_EQ(file_.GetIntValue("T", "n", -5), -5);
}

TEST_F(IniFile, AWalkSeesSectionsAndKeysInTheOrderOfTheFile)
{
    Load("\xEF\xBB\xBF; note\nx=before\n[b] rest\nz=1\n;y=2\ny = 3 \n\n[a]\n[b]\nz=4\r\nno key\n[c\nlast=5");
    EXPECT_EQ(Walk(file_), "3:2(1)2(3 )3:3:2(4)2(5)");
    EXPECT_EQ(Walk(file_), "3:2(1)2(3 )3:3:2(4)2(5)") << "a second walk";
}

TEST_F(IniFile, AWalkOfADocumentWithoutSectionsIsEmpty)
{
    EXPECT_EQ(Walk(file_), "");
    for (const char* bytes : {"", "\n", "k=1\n", "; [a]\n", "\xEF\xBB\xBF", "[a\n"}) {
        Load(bytes);
        EXPECT_EQ(Walk(file_), "") << bytes;
    }
}

TEST_F(IniFile, AWalkAfterAChangeSeesTheChange)
{
    Load("[a]\nx=1\n");
    EXPECT_EQ(Walk(file_), "3:2(1)");
    EXPECT_NE(file_.SetTextValue("a", "y", "2"), 0);
    EXPECT_EQ(Walk(file_), "3:2(1)2(2)");
    EXPECT_NE(file_.SetTextValue("b", "x", "3"), 0);
    EXPECT_EQ(Walk(file_), "3:2(1)2(2)3:2(3)");
}

TEST_F(IniFile, KeysSetDuringAWalkChangeTheirOwnBytesAlone)
{
    Load("\xEF\xBB\xBF; note\r\n[a]\r\n x = one \r\ny=2\n[b]\nk=1\nk = 3\n[c]\n\0=\xFF"s);
    KeyAt(file_, 0, 0).SetValue("a longer value than before");
    KeyAt(file_, 0, 1).SetValue("");
    KeyAt(file_, 1, 1).SetValue("=[;]#");
    EXPECT_EQ(KeyAt(file_, 0, 0).GetValue("default"), "a longer value than before");
    EXPECT_EQ(KeyAt(file_, 0, 1).GetValue("default"), "");
    EXPECT_EQ(ReadBytes(path_), "\xEF\xBB\xBF; note\r\n[a]\r\n x = one \r\ny=2\n[b]\nk=1\nk = 3\n[c]\n\0=\xFF"s)
        << "before the save";
    const std::string saved = "\xEF\xBB\xBF; note\r\n[a]\r\n x = a longer value than before\r\ny=\n[b]\nk=1\n"
                              "k = =[;]#\n[c]\n\0=\xFF"s;
    EXPECT_EQ(Saved(), saved);

    // The keys stay valid after a save, each at its new position.
    KeyAt(file_, 0, 0).SetValue("1");
    KeyAt(file_, 0, 1).SetValue("2");
    KeyAt(file_, 2, 0).SetValue("0");
    EXPECT_EQ(Saved(), "\xEF\xBB\xBF; note\r\n[a]\r\n x = 1\r\ny=2\n[b]\nk=1\nk = =[;]#\n[c]\n\0=0"s);
}

TEST_F(IniFile, AReadSeesWhatAKeyWasSetTo)
{
    Load("[a]\nx=1\ny=2\nx=3\n");
    KeyAt(file_, 0, 0).SetValue("44");
    KeyAt(file_, 0, 2).SetValue("unread");
    EXPECT_EQ(file_.GetTextValue("a", "x", ""), "44");
    EXPECT_EQ(file_.GetIntValue("a", "x", 0), 44);
    EXPECT_EQ(file_.GetTextValue("a", "y", ""), "2");
    KeyAt(file_, 0, 0).SetValue("5");
    EXPECT_EQ(file_.GetTextValue("a", "x", ""), "5");
    EXPECT_EQ(file_.GetTextValue("a", "y", ""), "2");
}

TEST_F(IniFile, KeysSetInAWalkAndChangesByNameGoTogether)
{
    Load("[a]\nx=1\ny=2\n");
    KeyAt(file_, 0, 0).SetValue("one");
    EXPECT_NE(file_.SetTextValue("a", "y", "two"), 0);
    EXPECT_EQ(file_.GetTextValue("a", "x", ""), "one");
    KeyAt(file_, 0, 0).SetValue("eins");
    EXPECT_EQ(file_.SetTextValue("a", "y", "no\nline"), 0);
    EXPECT_NE(file_.SetTextValue("b", "z", "3"), 0);
    EXPECT_EQ(Saved(), "[a]\nx=eins\ny=two\n\n[b]\nz=3\n");
}

TEST_F(IniFile, ATextWithALineFeedIsRefusedByAKey)
{
    Load("[a]\nx=1\ny=2\n");
    KeyAt(file_, 0, 0).SetValue("1\n[b]");
    EXPECT_EQ(KeyAt(file_, 0, 0).GetValue(""), "1");
    EXPECT_EQ(Saved(), "[a]\nx=1\ny=2\n");
}

TEST_F(IniFile, WhatCannotBeStoredIsRefusedAndChangesNothing)
{
    Load("[S]\nk=1\n");
    const std::string rows[][3] = {{"", "k", "v"},   {"S]", "k", "v"}, {"S", "", "v"},     {"S", "a=", "v"},
                                   {"S", " k", "v"}, {"S", ";k", "v"}, {"S", "k", "v\r"},  {"S", "k", "a\nb"},
                                   {"T", "[k", "v"}, {"T", "k ", "v"}, {"S", "k", "\0v"s}, {"S\0"s, "k", "v"}};
    for (const auto& row : rows)
        EXPECT_EQ(file_.SetTextValue(row[0], row[1], row[2]), 0) << row[0] << ' ' << row[1] << ' ' << row[2];
    EXPECT_EQ(file_.SetTextValue(/*section=*/nullptr, "k", "v"), 0);
    EXPECT_EQ(file_.SetTextValue("S", /*key=*/nullptr, "v"), 0);
    EXPECT_EQ(Saved(), "[S]\nk=1\n");
}

TEST_F(IniFile, AnyBytesAreLoadedAndSavedAsTheyAre)
{
    std::mt19937 random(20240229);
    const std::string likely = "[]=;# \t\r\n\n\nSk\0\xFF\xEF\xBB\xBF"s;
    const std::string copy = folder_.Path("copy.ini");
    for (int i = 0; i < 300; ++i) {
        std::string bytes;
        for (auto length = random() % 80; length > 0; --length)
            bytes += random() % 4 == 0 ? static_cast<char>(random() % 256) : likely[random() % likely.size()];
        Load(bytes);
        if (i % 2 == 0)
            (void)Walk(file_);
        ASSERT_NE(file_.SaveToFile(copy.c_str()), 0);
        ASSERT_EQ(ReadBytes(copy), bytes) << testing::PrintToString(bytes);
    }
}

TEST_F(IniFile, ALineOfAMegabyteIsKept)
{
    const std::string megabyte(1 << 20, '=');
    Load("[S]\nwide" + megabyte + "\nk=1\n;" + megabyte);
    EXPECT_EQ(file_.GetTextValue("S", "wide", ""), megabyte.substr(1));
    KeyAt(file_, 0, 1).SetValue("2");
    EXPECT_EQ(Saved(), "[S]\nwide" + megabyte + "\nk=2\n;" + megabyte);
}

TEST_F(IniFile, ALaterLoadReplacesWhatWasLoaded)
{
    const std::string other = folder_.Path("factory.ini");
    WriteBytes(other, "[T]\nx=2\n");
    Load("[S]\nk=1\n");
    KeyAt(file_, 0, 0).SetValue("never saved");
    ASSERT_NE(file_.LoadFromFile(other.c_str()), 0);
    EXPECT_EQ(file_.GetTextValue("S", "k", "default"), "default");
    EXPECT_EQ(Walk(file_), "3:2(2)");
    EXPECT_NE(file_.SetTextValue("T", "x", "3"), 0);
    EXPECT_NE(file_.SaveToFile(/*path=*/nullptr), 0);
    EXPECT_EQ(ReadBytes(other), "[T]\nx=3\n");
    EXPECT_EQ(ReadBytes(path_), "[S]\nk=1\n");
}

TEST_F(IniFile, SavingWithoutAPathGoesToTheFileLastLoaded)
{
    const std::string other = folder_.Path("other.ini");
    Load("[S]\nk=1\n");
    EXPECT_NE(file_.SetTextValue("S", "k", "2"), 0);
    EXPECT_NE(file_.SaveToFile(other.c_str()), 0);
    EXPECT_EQ(ReadBytes(path_), "[S]\nk=1\n");
    EXPECT_EQ(ReadBytes(other), "[S]\nk=2\n");
    EXPECT_NE(file_.SaveToFile(/*path=*/nullptr), 0);
    EXPECT_EQ(ReadBytes(path_), "[S]\nk=2\n");

    iniFile fresh(other.c_str());
    EXPECT_EQ(Walk(fresh), "") << "a path given at construction is not loaded";
    EXPECT_NE(fresh.SetTextValue("T", "x", "3"), 0);
    EXPECT_NE(fresh.SaveToFile(/*path=*/nullptr), 0);
    EXPECT_EQ(ReadBytes(other), "[T]\nx=3\n");
}

TEST_F(IniFile, GoingOutOfScopeSavesNothing)
{
    WriteBytes(path_, "[S]\nk=1\n");
    {
        iniFile file;
        ASSERT_NE(file.LoadFromFile(path_.c_str()), 0);
        KeyAt(file, 0, 0).SetValue("2");
        EXPECT_NE(file.SetTextValue("S", "x", "3"), 0);
    }
    EXPECT_EQ(ReadBytes(path_), "[S]\nk=1\n");
}
