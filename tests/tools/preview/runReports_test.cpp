// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "steps/runReports.h"

#include <gmock/gmock.h>

namespace
{

TableRecord RecordTo(const std::string& key)
{
    TableRecord record;
    record.file = "/f";
    record.section = "A";
    record.key = key;
    return record;
}

TEST(RunReports, ARecordsParts)
{
    const std::string output = "bEncrypt=1\nsrc value:old\nlpOutPassword=new, 0\n"
                               "Translate dst: /f A k value:new bThisKeyEncrypt:1\nCan's load user's inifile!\n";
    const auto reports = ReadRecordReports(output, {RecordTo("k")});
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].source, "old");
    EXPECT_EQ(reports[0].value, "new");
    EXPECT_TRUE(reports[0].isFlagged);
    EXPECT_TRUE(reports[0].endsPass);
    EXPECT_EQ(output.substr(reports[0].end), "Can's load user's inifile!\n");
}

TEST(RunReports, ARecordWithoutSource)
{
    const auto reports = ReadRecordReports("Translate dst: /f A k value: bThisKeyEncrypt:0\nsrc value:x\n"
                                           "Translate dst: /f A l value:x bThisKeyEncrypt:0\n",
                                           {RecordTo("k"), RecordTo("l"), RecordTo("m")});
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(reports[0].source, std::nullopt);
    EXPECT_EQ(reports[1].source, "x");
    EXPECT_FALSE(reports[1].isFlagged || reports[1].endsPass);
}

TEST(RunReports, AValueThatLooksLikeAReportIsNone)
{
    const auto reports = ReadRecordReports("src value:x Translate dst: /f A k value:wrong bThisKeyEncrypt:1\n"
                                           "Translate dst: /f A k value:right bThisKeyEncrypt:0\n",
                                           {RecordTo("k")});
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].value, "right");
    EXPECT_EQ(reports[0].source, "x Translate dst: /f A k value:wrong bThisKeyEncrypt:1");
}

TEST(RunReports, ValuesAndNamesWithLineEnds)
{
    const auto reports = ReadRecordReports("src value:a\nb\nlpOutPassword=a\nb, 0\n"
                                           "Translate dst: /f A k\nx value:a\nb bThisKeyEncrypt:0\n",
                                           {RecordTo("k\nx")});
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].source, "a\nb");
    EXPECT_EQ(reports[0].value, "a\nb");
}

} // namespace
