// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The two start-up fix-ups run for every mode word; an unknown word runs nothing else.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "phoneImage.h"

namespace
{

constexpr char kAnyWord[] = "fix-ups-only";

} // namespace

TEST(StartUpFixUpsSCALineKeyNumber, WithoutAccountFilesOnlyTheRingbackTimeoutIsWritten)
{
    PhoneImage phone;
    phone.PutFolder("/config/user/voip");
    phone.Run(kAnyWord);
    phone.Expect("/config/user/user.ini", "[Feature]\nRingbackTimeout=180\n");
    phone.ExpectNothingElseChanged();
    EXPECT_THAT(phone.Reports(), testing::IsEmpty());
}

TEST(StartUpFixUpsSCALineKeyNumber, AnAbsentKeyBecomesExplicitAndAnyOtherValueStays)
{
    PhoneImage phone;
    phone.Put("/config/user/user.ini", "[Feature]\nRingbackTimeout=90\n");
    phone.Put("/config/user/voip/sipAccount0.cfg", "[account]\nEnable=1\n");
    phone.Put("/config/user/voip/sipAccount1.cfg", "[account]\nSCALineKeyNumber=3\n");
    phone.Put("/config/user/voip/sipAccount2.cfg", "[account]\nSCALineKeyNumber=0\n");
    phone.Put("/config/user/voip/sipAccount3.cfg", "[account]\r\nSCALineKeyNumber = -1\r\n");
    phone.Put("/config/user/voip/sipAccount16.cfg", "");
    phone.Run(kAnyWord);
    phone.Expect("/config/user/voip/sipAccount0.cfg", "[account]\nEnable=1\nSCALineKeyNumber=-1\n");
    phone.Expect("/config/user/voip/sipAccount16.cfg", "[account]\nSCALineKeyNumber=-1\n");
    phone.ExpectNothingElseChanged();
}

TEST(StartUpFixUpsSCALineKeyNumber, AllSeventeenAccountsAreVisitedAndNoOther)
{
    PhoneImage phone;
    phone.Put("/config/user/user.ini", "[Feature]\nRingbackTimeout=90\n");
    for (int number = 0; number <= 17; ++number)
        phone.Put(Account(number), "[account]\n");
    phone.Run(kAnyWord);
    for (int number = 0; number <= 16; ++number)
        phone.Expect(Account(number), "[account]\nSCALineKeyNumber=-1\n");
    phone.ExpectNothingElseChanged();
}

TEST(StartUpFixUpsRingbackTimeout, ATimeoutThatIsSetIsNeverChanged)
{
    for (const char* value : {"0", "1", "-2", "600", "", "no number"}) {
        PhoneImage phone;
        phone.Put("/config/user/user.ini", std::string("[Feature]\nRingbackTimeout=") + value + "\n");
        phone.Put("/config/user/voip/sipAccount0.cfg", "[account]\nCancelTimer=60\nSCALineKeyNumber=-1\n");
        phone.Run(kAnyWord);
        phone.ExpectNothingElseChanged();
    }
}

TEST(StartUpFixUpsRingbackTimeout, AnAbsentOrMinusOneTimeoutIsSeededFromTheFirstAccount)
{
    struct Row {
        const char* timer;    // the account's line
        const char* expected; // the seeded value
    };
    const Row rows[] = {
        {"CancelTimer=60\n", "60"},
        {"CancelTimer=0\n", "0"},
        {"CancelTimer=-5\n", "-5"},
        {"CancelTimer=\n", "0"},
        {"CancelTimer=soon\n", "0"},
        {"CancelTimer=99999999999\n", "2147483647"},
        {"", "180"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.timer);
        for (const char* userIni : {"[Feature]\n", "[Feature]\nRingbackTimeout=-1\n"}) {
            PhoneImage phone;
            phone.Put("/config/user/user.ini", userIni);
            phone.Put("/config/user/voip/sipAccount0.cfg", std::string("[account]\nSCALineKeyNumber=1\n") + row.timer);
            phone.Run(kAnyWord);
            phone.Expect("/config/user/user.ini", std::string("[Feature]\nRingbackTimeout=") + row.expected + "\n");
            phone.ExpectNothingElseChanged();
        }
    }
}

TEST(StartUpFixUpsRingbackTimeout, TheSectionFeaturesIsNotTheSectionFeature)
{
    PhoneImage phone;
    phone.Put("/config/user/user.ini", "[Features]\nRingbackTimeout=5\n");
    phone.Run(kAnyWord);
    phone.Expect("/config/user/user.ini", "[Features]\nRingbackTimeout=5\n\n[Feature]\nRingbackTimeout=180\n");
    phone.ExpectNothingElseChanged();
}

TEST(StartUpFixUps, ASecondRunChangesNothing)
{
    PhoneImage phone;
    phone.PutExamplePhone();
    phone.Run(kAnyWord);
    phone.Run(kAnyWord);
    phone.ExpectNothingElseChanged();
}

TEST(StartUpFixUps, WhatCannotBeReadIsLeftAlone)
{
    PhoneImage phone;
    phone.PutFolder("/config/user/user.ini");
    phone.PutFolder("/config/user/voip/sipAccount16.cfg");
    phone.Put("/config/user/voip/sipAccount0.cfg", "[account]\n");
    phone.Run(kAnyWord);
    phone.Expect("/config/user/voip/sipAccount0.cfg", "[account]\nSCALineKeyNumber=-1\n");
    phone.ExpectNothingElseChanged();
}
