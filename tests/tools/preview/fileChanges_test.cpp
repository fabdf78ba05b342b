// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "changes/fileChanges.h"

#include <gmock/gmock.h>

#include "oneFilePhone.h"

namespace
{

constexpr char kLayout[] = "/config/data/linekey.xml";

/// Whether a change by one pass is called one without other values.
bool IsSame(const std::string& path, const std::string& before, const std::string& after, const std::string& pass)
{
    const Snapshot old = PhoneWith(path, before);
    const Snapshot now = PhoneWith(path, after);
    const std::vector<PassState> states = {{"", old}, {pass, now}};
    return FindChanges(old, now, states, FileFormats(PhoneLists())).at(0).hasSameValues;
}

TEST(FileChanges, APassThatWritesXmlMayUseOtherBytes)
{
    EXPECT_TRUE(IsSame(kLayout, "<a><b c='1'></b></a>", "<a><b c=\"1\"/></a>", "mode 2 migration"));
    EXPECT_TRUE(IsSame(kLayout, "<a><b c='1'></b></a>", "<a><b c=\"1\"/></a>", "2: mode 2 migration"));
}

TEST(FileChanges, AnotherPassMayNot)
{
    EXPECT_FALSE(IsSame(kLayout, "<a><b c='1'></b></a>", "<a><b c=\"1\"/></a>", "translation table"));
    EXPECT_FALSE(IsSame("/config/x.xml", "<a><b c='1'></b></a>", "<a><b c=\"1\"/></a>", "mode 2 migration"));
}

TEST(FileChanges, ValuesInAnotherOrderAreNotTheSame)
{
    EXPECT_FALSE(IsSame(kLayout, "<a><b c='1' d='2'/></a>", "<a><b d='2' c='1'/></a>", "mode 2 migration"));
}

TEST(FileChanges, BlanksDoNotMatter)
{
    EXPECT_TRUE(IsSame("/config/x.xml", "<a>\n<b/></a>", "<a> <b /> </a>\n", "translation table"));
}

} // namespace
