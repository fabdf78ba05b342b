// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "table/recordOutcomes.h"

#include <gmock/gmock.h>

#include "oneFilePhone.h"

namespace
{

using ::testing::ElementsAre;
using enum RecordOutcome;

constexpr char kFile[] = "/config/user/user.ini";

TableRecord Record(const std::string& sourceKey, const std::string& key)
{
    return {kFile, "A", sourceKey, kFile, "A", key};
}

/// What the program reports of a record that reads and writes these values.
std::string Report(const TableRecord& record, const std::string& source, const std::string& value)
{
    return "src value:" + source + "\nlpOutPassword=" + value + ", -1\nTranslate dst: " + record.file + " " +
           record.section + " " + record.key + " value:" + value + " bThisKeyEncrypt:0\n";
}

std::vector<RecordOutcome> Outcomes(const std::vector<TableRecord>& records, const std::string& output,
                                    const std::string& content, const std::string& mode = "all")
{
    return FindRecordOutcomes(records, {{mode, output, ""}}, PhoneWith(kFile, content), {});
}

RecordOutcome OutcomeOf(const TableRecord& record, const std::string& source, const std::string& value,
                        const std::string& content)
{
    return Outcomes({record}, Report(record, source, value), content).at(0);
}

TEST(RecordOutcomes, AValueThatMoves)
{
    EXPECT_EQ(OutcomeOf(Record("a", "b"), "1", "1", "[A]\na=1\n"), Moved);
    EXPECT_EQ(OutcomeOf(Record("a", "b"), "1", "1", "[A]\na=1\nb=2\n"), Moved);
    EXPECT_EQ(OutcomeOf(Record("a", "a"), "token", "plain", "[A]\na=token\n"), Moved);
}

TEST(RecordOutcomes, ADestinationThatHasTheValueAlready)
{
    EXPECT_EQ(OutcomeOf(Record("a", "b"), "1", "1", "[A]\na=1\nb=1\n"), NothingChanged);
    EXPECT_EQ(OutcomeOf(Record("a", "a"), "1", "1", "[A]\na=1\n"), NothingChanged);
}

TEST(RecordOutcomes, AnEmptyValue)
{
    EXPECT_EQ(OutcomeOf(Record("a", "b"), "", "", "[A]\na=\nb=2\n"), WroteEmpty);
    EXPECT_EQ(OutcomeOf(Record("a", "b"), "", "", "[A]\na=\nb=\n"), WroteEmpty) << "it counts before NothingChanged";
    EXPECT_EQ(OutcomeOf(Record("a", "b"), "lost", "", "[A]\na=lost\n"), WroteEmpty) << "lost by the cipher";
}

TEST(RecordOutcomes, NoSource)
{
    EXPECT_EQ(OutcomeOf(Record("a", "b"), "", "", "[A]\nb=2\n"), NoSource);
    EXPECT_EQ(OutcomeOf(Record("a", "b"), "", "", "[A]\nb=\n"), NoSource) << "it counts before WroteEmpty";
    EXPECT_EQ(OutcomeOf({kFile, "B", "b", kFile, "A", "b"}, "", "", "[A]\nb=2\n"), NoSource);
    EXPECT_EQ(OutcomeOf({"/config/none", "A", "b", kFile, "A", "b"}, "", "", "[A]\nb=2\n"), NoSource);
}

TEST(RecordOutcomes, ASourceAttributeThatIsAbsent)
{
    const TableRecord record = {kFile, "A", "", kFile, "A", "b"};
    EXPECT_THAT(Outcomes({record}, "Translate dst: /config/user/user.ini A b value: bThisKeyEncrypt:0\n", "[A]\nb=2\n"),
                ElementsAre(NoSource));
}

TEST(RecordOutcomes, ADestinationThatNoFileCanContain)
{
    EXPECT_EQ(OutcomeOf(Record("a", "x=y"), "1", "1", "[A]\na=1\n"), NothingChanged);
    EXPECT_EQ(OutcomeOf(Record("a", "x=y"), "", "", "[A]\na=\n"), NothingChanged);
    EXPECT_EQ(OutcomeOf(Record("a", "b"), "1", "1", std::string("[A]\na=1\0x\n", 10)), NothingChanged);
}

TEST(RecordOutcomes, ARecordFindsWhatEarlierOnesWrote)
{
    const std::vector<TableRecord> records = {Record("a", "b"), Record("b", "c"), Record("b", "d"), Record("a", "c")};
    EXPECT_THAT(Outcomes(records,
                         Report(records[0], "1", "1") + Report(records[1], "1", "1") + Report(records[2], "1", "1") +
                             Report(records[3], "1", "1"),
                         "[A]\na=1\nd=1\n"),
                ElementsAre(Moved, Moved, NothingChanged, NothingChanged));
    const std::vector<TableRecord> emptied = {Record("none", "b"), Record("b", "c")};
    EXPECT_THAT(Outcomes(emptied, Report(emptied[0], "", "") + Report(emptied[1], "", ""), "[A]\na=1\n"),
                ElementsAre(NoSource, WroteEmpty))
        << "the first record made the source of the second one";
}

TEST(RecordOutcomes, OnePathInTwoSpellings)
{
    const std::vector<TableRecord> records = {{kFile, "A", "a", "/config//user/user.ini", "A", "b"}, Record("a", "b")};
    EXPECT_THAT(Outcomes(records, Report(records[0], "1", "1") + Report(records[1], "1", "1"), "[A]\na=1\n"),
                ElementsAre(Moved, NothingChanged));
}

TEST(RecordOutcomes, TheRecordThatEndsThePassAndThoseAfterIt)
{
    std::vector<TableRecord> records = {Record("a", "b"), Record("a", "c"), Record("a", "d")};
    records[1].file = "/config/none";
    EXPECT_THAT(Outcomes(records,
                         Report(records[0], "1", "1") + Report(records[1], "1", "1") + "Can's load user's inifile!\n",
                         "[A]\na=1\n"),
                ElementsAre(Moved, NeverRan, NeverRan));
}

TEST(RecordOutcomes, OnlyModesWithTheTableCount)
{
    const TableRecord record = Record("a", "b");
    EXPECT_THAT(Outcomes({record}, Report(record, "1", "1"), "[A]\na=1\n", "pwd"), ElementsAre(NeverRan));
    EXPECT_THAT(Outcomes({record}, Report(record, "1", "1"), "[A]\na=1\n", "dev"), ElementsAre(Moved));
}

TEST(RecordOutcomes, TheFirstRunCounts)
{
    const TableRecord record = Record("a", "b");
    const RunReports run = {"dev", Report(record, "1", "1"), ""};
    const Snapshot before = PhoneWith(kFile, "[A]\na=1\n");
    const Snapshot after = PhoneWith(kFile, "[A]\na=1\nb=1\n");
    const std::vector<PassState> states = {{"", before},
                                           {"1: start-up fix-ups", before},
                                           {"dev: start-up fix-ups", before},
                                           {"dev: translation table", after},
                                           {"all: translation table", after}};
    EXPECT_THAT(FindRecordOutcomes({record}, {{"1", "", ""}, run, run}, before, states), ElementsAre(Moved));
}

TEST(RecordOutcomes, ThePhoneAfterThePassesBeforeTheTable)
{
    const TableRecord record = {kFile, "Feature", "RingbackTimeout", kFile, "A", "b"};
    const Snapshot before = PhoneWith(kFile, "[A]\nb=0\n");
    const Snapshot fixed = PhoneWith(kFile, "[A]\nb=0\n[Feature]\nRingbackTimeout=\n");
    const std::vector<RunReports> runs = {{"all", Report(record, "", ""), ""}};
    EXPECT_THAT(FindRecordOutcomes({record}, runs, before,
                                   {{"", before}, {"start-up fix-ups", fixed}, {"translation table", fixed}}),
                ElementsAre(WroteEmpty));
    EXPECT_THAT(FindRecordOutcomes({record}, runs, before, {}), ElementsAre(NoSource));
}

} // namespace
