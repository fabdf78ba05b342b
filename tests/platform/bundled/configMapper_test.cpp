// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The list of enciphered entries, as the password pass processes it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "phoneImage.h"
#include "xmlText.h"

namespace
{

constexpr char kList[] = "/phone/resource/encryptconfig.xml";
constexpr char kSettings[] = "/config/user/web.ini";

// In clear text and enciphered with the development key.
constexpr char kFirst[] = "Decrypt:(q252TBV7RXOe8CJI0YcqWbFTAWxn)->(first)";
constexpr char kSecond[] = "Decrypt:(auhsCPzGnqyO2J1qJ6judCkZH8MJ6A)->(second)";
constexpr char kThird[] = "Decrypt:(znVvF2sjieww3pGHGGXlBYl5jfqB)->(third)";

using Lines = std::vector<std::string>;

/// A phone whose lock is switched off.
PhoneImage& Prepare(PhoneImage& phone)
{
    phone.Put("/config/user/user.ini", "[PhoneSetting]\nEnLock=1\n[Feature]\nRingbackTimeout=90\n");
    phone.Put("/phone/factory/user/user.ini", "[PhoneSetting]\nEnLock=0\n");
    phone.Put(kSettings, "[Web]\nA=q252TBV7RXOe8CJI0YcqWbFTAWxn\nB=auhsCPzGnqyO2J1qJ6judCkZH8MJ6A\n"
                         "C=znVvF2sjieww3pGHGGXlBYl5jfqB\n");
    return phone;
}

std::string EntryOf(const std::string& key, const std::string& more = "")
{
    return "<entry file='/config/user/web.ini' section='Web' key='" + key + "' " + more + "/>";
}

/// The traces of the password pass over this list.
Lines TracesOf(const std::string& list)
{
    PhoneImage phone;
    Prepare(phone).Put(kList, list);
    phone.Run("pwd");
    Lines traces;
    for (const std::string& report : phone.Reports())
        traces.push_back(report.substr(report.find(": ") + 2));
    return traces;
}

} // namespace

TEST(BundledConfigMapper, EveryChildOfTheRootIsAnEntryInOrder)
{
    const std::string lists[] = {
        "<encrypt>" + EntryOf("C") + EntryOf("A") + EntryOf("B") + "</encrypt>",
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<!-- <entry key='no'/> -->\r\n<encrypt>" + EntryOf("C") +
            "\r\n<!-- " + EntryOf("B") + " -->text" + EntryOf("A") + EntryOf("B") + "</encrypt>\r\n",
        "<a><entry file='/config/user/web.ini' section='Web' key='C'><x key='A'/>" + EntryOf("B") + "</entry>" +
            EntryOf("A") + "<any.name file='/config/user/web.ini' section='Web' key='B'/></a>",
        "<a><x key='C' section='Web' other='1' file='&#x2F;config/user/web.ini'/>" + EntryOf("A") + EntryOf("B") +
            "</a>",
    };
    for (const std::string& list : lists) {
        SCOPED_TRACE(list);
        EXPECT_EQ(TracesOf(list), (Lines{kThird, kFirst, kSecond}));
    }
}

TEST(BundledConfigMapper, TheSameEntryMayStandTwice)
{
    EXPECT_EQ(TracesOf("<a>" + EntryOf("A") + EntryOf("A") + "</a>"), (Lines{kFirst, "Decrypt:(first)->()"}));
}

TEST(BundledConfigMapper, AttributesThatAreAbsentAreEmptyTexts)
{
    struct Row {
        const char* entry;
        Lines traces;
    };
    const Row rows[] = {
        {"<e section='Web' key='A'/>", {"Fail to load file [] !!"}},
        {"<e file='/config/user/web.ini' key='A' default='d'/>", {"Decrypt:(d)->()"}},
        {"<e file='/config/user/web.ini' section='Web' default='d'/>", {"Decrypt:(d)->()"}},
        {"<e file='/config/user/web.ini' section='Web' key='D'/>", {}},
        {"<e file='/config/user/web.ini' section='Web' key='D' default=''/>", {}},
        {"<e file='/config/user/web.ini' section='Web' key='D' default='d'/>", {"Decrypt:(d)->()"}},
        {"<e File='/config/user/web.ini' SECTION='Web' Key='A'/>", {"Fail to load file [] !!"}},
        {"<e/>", {"Fail to load file [] !!"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.entry);
        Lines expected = {kFirst}; // of an earlier entry: otherwise an empty path would count as already loaded
        expected.insert(expected.end(), row.traces.begin(), row.traces.end());
        EXPECT_EQ(TracesOf("<a>" + EntryOf("A") + row.entry + "</a>"), expected);
    }
}

TEST(BundledConfigMapper, AnEntryIsActiveUnlessItSaysOtherwise)
{
    for (const char* active : {"", "active='true'", "active='TRUE'", "active='yes'", "active='1'", "active='maybe'"})
        EXPECT_EQ(TracesOf("<a>" + EntryOf("A", active) + "</a>"), Lines{kFirst}) << active;
    for (const char* inactive : {"active='false'", "active='False'", "active='no'", "active='0'"})
        EXPECT_THAT(TracesOf("<a>" + EntryOf("A", inactive) + "</a>"), testing::IsEmpty()) << inactive;
}

TEST(BundledConfigMapper, AnEntryIsKeptPerAccountWhenItSaysSo)
{
    const Lines accounts = {"Fail to load file [/config/user/voip/sipAccount0.cfg] !!",
                            "Fail to load file [/config/user/voip/sipAccount1.cfg] !!",
                            "Fail to load file [/config/user/voip/sipAccount2.cfg] !!",
                            "Fail to load file [/config/user/voip/sipAccount3.cfg] !!"};
    for (const char* set : {"perAccount='true'", "perAccount='Yes'", "perAccount='1'"})
        EXPECT_EQ(TracesOf("<a>" + EntryOf("A", set) + "</a>"), accounts) << set;
    for (const char* clear :
         {"", "perAccount='false'", "perAccount='no'", "perAccount='0'", "perAccount='maybe'", "peraccount='true'"})
        EXPECT_EQ(TracesOf("<a>" + EntryOf("A", clear) + "</a>"), Lines{kFirst}) << clear;
}

TEST(BundledConfigMapper, AnEmptyFlagIsNoBooleanAndCountsAsAbsent)
{
    // The XML library aborts the program if a boolean attribute is empty.
    EXPECT_EQ(TracesOf("<a>" + EntryOf("A", "active=''") + "</a>"), Lines{kFirst});
    EXPECT_EQ(TracesOf("<a>" + EntryOf("A", "perAccount=''") + "</a>"), Lines{kFirst});
}

TEST(BundledConfigMapper, AListWithoutEntriesIsAList)
{
    for (const char* list : {"<a/>", "<a></a>", "<a>text<!-- comment --></a>"})
        EXPECT_THAT(TracesOf(list), testing::IsEmpty()) << list;
}

TEST(BundledConfigMapper, AListThatDoesNotLoadIsReportedAndNothingIsConverted)
{
    const Lines failure = {"etlTrace 3: Fail to get encrypt config !!"};
    PhoneImage missing;
    Prepare(missing).Run("pwd");
    EXPECT_EQ(missing.Reports(), failure);
    missing.ExpectNothingElseChanged();

    PhoneImage folder;
    Prepare(folder).PutFolder(kList);
    folder.Run("pwd");
    EXPECT_EQ(folder.Reports(), failure);
    folder.ExpectNothingElseChanged();

    const std::string deep = Repeat("<a>", 201) + Repeat("</a>", 201);
    const std::string texts[] = {"",
                                 "no XML",
                                 "<a>" + EntryOf("A"),
                                 "<a>" + EntryOf("A") + "<entry</a>",
                                 "<a>" + EntryOf("A") + "</b>",
                                 "<a>" + EntryOf("A") + deep + "</a>"};
    for (const std::string& text : texts) {
        SCOPED_TRACE(text);
        PhoneImage phone;
        Prepare(phone).Put(kList, text);
        phone.Run("pwd");
        EXPECT_EQ(phone.Reports(), failure);
        phone.ExpectNothingElseChanged();
    }
}
