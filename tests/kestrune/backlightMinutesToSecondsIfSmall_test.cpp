// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The operation that the app library offers to other programs of the device in addition to the translators. No mode
// calls it.

#include <gtest/gtest.h>

#include "operationResult.h"
#include "phoneImage.h"
#include "untouchedFiles.h"

TEST(BacklightMinutesToSecondsIfSmall, ValuesUpToFiftyNineAreMultiplied)
{
    struct Row {
        const char* before;
        const char* after; // null: not even saved
    };
    const Row rows[] = {
        {"5", "300"},
        {"1", "60"},
        {"59", "3540"},
        {"60", nullptr},
        {"61", nullptr},
        {"300", nullptr},
        {"2147483647", nullptr},
        {"99999999999", nullptr},
        {"0", "0"},
        {"-1", "-60"},
        {"-35791394", "-2147483640"},
        {"-35791395", "-2147483648"},
        {"-2147483648", "-2147483648"},
        {"-99999999999", "-2147483648"},
        {"", "0"},
        {"soon", "0"},
        {"0x10", "0"},
        {"+7", "420"},
        {"7 minutes", "420"},
        {"007", "420"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.before);
        PhoneImage phone;
        const std::string text = "[Feature]\nn=1\n[Backlight]\nnBacklightTime=";
        phone.Put(kUserIni, text + row.before + "\nkeep=1\n");
        const UntouchedFiles files(phone, {kUserIni});
        RunForResult(phone, "BacklightMinutesToSecondsIfSmall");
        if (row.after == nullptr)
            files.Check();
        else
            phone.Expect(kUserIni, text + row.after + "\nkeep=1\n");
    }
}

TEST(BacklightMinutesToSecondsIfSmall, AnAbsentTimeCountsAsOneMinute)
{
    for (const char* before : {"", "[Backlight]\n"}) {
        PhoneImage phone;
        phone.Put(kUserIni, before);
        RunForResult(phone, "BacklightMinutesToSecondsIfSmall");
        phone.Expect(kUserIni, "[Backlight]\nnBacklightTime=60\n");
    }
    PhoneImage phone;
    phone.PutFolder("/config/user");
    RunForResult(phone, "BacklightMinutesToSecondsIfSmall");
    phone.Expect(kUserIni, "[Backlight]\nnBacklightTime=60\n");
}

TEST(BacklightMinutesToSecondsIfSmall, WhatCannotBeReadOrMadeIsLeft)
{
    PhoneImage phone;
    RunForResult(phone, "BacklightMinutesToSecondsIfSmall"); // no folder to write to
    phone.ExpectMissing(kUserIni);
    phone.PutFolder(kUserIni);
    RunForResult(phone, "BacklightMinutesToSecondsIfSmall");
    EXPECT_TRUE(phone.Has(kUserIni));
}

TEST(BacklightMinutesToSecondsIfSmall, NoModeCallsIt)
{
    // Mode "2" multiplies any value; no other mode multiplies at all.
    for (const char* mode : {"all", "dev", "pwd", "1", "2", "other"}) {
        SCOPED_TRACE(mode);
        PhoneImage phone;
        phone.Put(kUserIni, "[Feature]\nRingbackTimeout=1\n[Backlight]\nnBacklightTime=5\n");
        phone.Run(mode);
        phone.ExpectNothingElseChanged();
    }
    PhoneImage phone;
    phone.Put("/tmp/VersionInfo.cfg", "");
    phone.Put(kUserIni, "[Feature]\nRingbackTimeout=1\n[Backlight]\nnBacklightTime=60\n");
    phone.Run("2");
    phone.Expect(kUserIni, "[Feature]\nRingbackTimeout=1\n[Backlight]\nnBacklightTime=3600\n");
    phone.ExpectNothingElseChanged();
}
