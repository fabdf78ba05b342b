// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include "changes/fileChanges.h"
#include "oneFilePhone.h"

namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kPath[] = "/config/data/contact_list.xml";

std::string Contact(const std::string& name, const std::string& number)
{
    return "<contact display_name='" + name + "' n='" + number + "'/>";
}

std::string List(const std::vector<std::string>& contacts)
{
    std::string text = "<r>";
    for (const std::string& contact : contacts)
        text += contact;
    return text + "</r>";
}

FileChange Compare(const std::string& before, const std::string& after, const std::vector<std::string>& between = {})
{
    const Snapshot old = PhoneWith(kPath, before);
    const Snapshot now = PhoneWith(kPath, after);
    std::vector<PassState> states = {{"", old}};
    for (const std::string& content : between)
        states.push_back({"pass " + std::to_string(states.size()), PhoneWith(kPath, content)});
    states.push_back({"last", now});
    return FindChanges(old, now, states, FileFormats(PhoneLists())).at(0);
}

/// The changes as texts, such as "+ r/contact["Ann"] n".
std::vector<std::string> Changes(const std::string& before, const std::string& after)
{
    std::vector<std::string> texts;
    for (const ItemChange& change : Compare(before, after).items)
        texts.push_back(std::string(1, "+~!-"[static_cast<int>(change.kind)]) + " " + *change.place.group + " " +
                        change.place.name);
    return texts;
}

const std::string kAnn = Contact("Ann", "1");
const std::string kBob = Contact("Bob", "2");
const std::string kCyd = Contact("Cyd", "3");

TEST(XmlRecords, OneInFrontIsOneAddition)
{
    EXPECT_THAT(Changes(List({kBob, kCyd}), List({kAnn, kBob, kCyd})),
                ElementsAre(R"(+ r/contact["Ann"] display_name)", R"(+ r/contact["Ann"] n)"));
}

TEST(XmlRecords, OneThatIsRemovedIsNextToItsNeighbour)
{
    const std::string changed = Contact("Cyd", "9");
    EXPECT_THAT(Changes(List({Contact("Ann", "9"), kBob, changed}), List({kAnn, kCyd})),
                ElementsAre(R"(~ r/contact["Ann"] n)", R"(- r/contact["Bob"] display_name)", R"(- r/contact["Bob"] n)",
                            R"(~ r/contact["Cyd"] n)"));
    EXPECT_THAT(
        Changes(List({kBob, changed}), List({kCyd})),
        ElementsAre(R"(- r/contact["Bob"] display_name)", R"(- r/contact["Bob"] n)", R"(~ r/contact["Cyd"] n)"));
}

TEST(XmlRecords, ANewNameAtTheSamePositionIsAChange)
{
    EXPECT_THAT(Changes(List({kAnn, kBob, kCyd}), List({kAnn, Contact("Rob", "2"), kCyd})),
                ElementsAre(R"(~ r/contact["Rob"] display_name)"));
    EXPECT_THAT(Changes(List({kBob}), List({Contact("", "2")})), ElementsAre("! r/contact[1] display_name"));
    EXPECT_THAT(Changes(List({"<item id='1'><data n='1'/></item>"}), List({"<item id='2'><data n='2' m='3'/></item>"})),
                ElementsAre(R"(~ r/item["2"] id)", R"(~ r/item["2"]/data[1] n)", R"(+ r/item["2"]/data[1] m)"));
}

TEST(XmlRecords, ANewNameAtAnotherPositionIsAnotherRecord)
{
    EXPECT_THAT(Changes(List({kAnn, kBob}), List({Contact("Rob", "2"), kAnn})),
                ElementsAre(R"(+ r/contact["Rob"] display_name)", R"(+ r/contact["Rob"] n)",
                            R"(- r/contact["Bob"] display_name)", R"(- r/contact["Bob"] n)"));
}

TEST(XmlRecords, WholeRecordsAreKnown)
{
    const auto items =
        Compare(List({kAnn, kBob}), List({Contact("Abe", "1"), kBob, "<contact display_name='Cyd' m='1'/>"})).items;
    ASSERT_EQ(items.size(), 3U);
    EXPECT_FALSE(items[0].isOfWholeGroup);
    EXPECT_TRUE(items[1].isOfWholeGroup && items[2].isOfWholeGroup);
    EXPECT_TRUE(Compare(List({kAnn, kBob}), List({kAnn})).items.at(0).isOfWholeGroup);
    EXPECT_FALSE(Compare(List({"<e id='1' n='1'/>"}), List({"<e id='2' m='1'/>"})).items.at(1).isOfWholeGroup);
}

TEST(XmlRecords, TwoOfOneNameAreCounted)
{
    EXPECT_THAT(
        Changes(List({kAnn, kBob, Contact("Ann", "7")}), List({kCyd, kAnn, kBob, Contact("Ann", "8")})),
        ElementsAre(R"(+ r/contact["Cyd"] display_name)", R"(+ r/contact["Cyd"] n)", R"(~ r/contact["Ann"](2) n)"));
    EXPECT_THAT(Changes(List({kAnn, kAnn}), List({kAnn})),
                ElementsAre(R"(- r/contact["Ann"](2) display_name)", R"(- r/contact["Ann"](2) n)"));
}

TEST(XmlRecords, AnotherOrderIsNoChangeOfAValue)
{
    const FileChange change = Compare(List({kAnn, kBob}), List({kBob, kAnn}));
    EXPECT_THAT(change.items, IsEmpty());
    EXPECT_FALSE(change.hasSameValues);
}

TEST(XmlRecords, WithoutANameTheNumberCounts)
{
    EXPECT_THAT(Changes("<r><e n='1'/><e name='' n='2'/></r>", "<r><e n='3'/><e name='' n='4'/></r>"),
                ElementsAre("~ r/e[1] n", "~ r/e[2] n"));
}

TEST(XmlRecords, ValuesThatCouldBeReadAsSomethingElse)
{
    for (const std::string& name : {std::string("a\"]/b[\"c"), std::string("x=1"), std::string("x:1"),
                                    std::string("&lt;x"), std::string(65, 'x')})
        EXPECT_THAT(Changes("<r><e name='" + name + "' n='1'/></r>", "<r><e name='" + name + "' n='2'/></r>"),
                    ElementsAre("~ r/e[1] n"))
            << name;
    EXPECT_THAT(Changes("<r><password><e name='heron' n='1'/></password></r>",
                        "<r><password><e name='heron' n='2'/></password></r>"),
                ElementsAre("~ r/password[1]/e[1] n"));
}

TEST(XmlRecords, TheNameOfTheOldFormAndTheIdOfTheNewOneAreTheSame)
{
    EXPECT_THAT(Changes("<r><item title='door1' n='1'/></r>", "<r><item id_name='door1' n='2'/></r>"),
                ElementsAre(R"(+ r/item["door1"] id_name)", R"(~ r/item["door1"] n)", R"(- r/item["door1"] title)"));
}

TEST(XmlRecords, ThePassThatChangedARecordIsKnownWhereverItIs)
{
    const std::string changed = Contact("Bob", "7");
    const auto items = Compare(List({kBob}), List({kAnn, changed}), {List({changed}), List({kAnn, changed})}).items;
    ASSERT_EQ(items.size(), 3U);
    EXPECT_THAT(items[0].passes, ElementsAre("pass 2"));
    EXPECT_EQ(items[2].place.name, "n");
    EXPECT_THAT(items[2].passes, ElementsAre("pass 1"));
    const auto renamed = Compare(List({kBob}), List({Contact("Rob", "7")}), {List({changed})}).items;
    ASSERT_EQ(renamed.size(), 2U);
    EXPECT_THAT(renamed[0].passes, ElementsAre("last"));
    EXPECT_THAT(renamed[1].passes, ElementsAre("pass 1"));
}

TEST(XmlRecords, PositionsAreNumbersOnly)
{
    const auto items = ReadItems(FileFormat::Xml, List({kAnn, kBob}));
    ASSERT_EQ(items->size(), 4U);
    EXPECT_EQ(*(*items)[3].group, R"(r/contact["Bob"])");
    EXPECT_EQ(*(*items)[3].position, "r/contact[2]");
}

} // namespace
