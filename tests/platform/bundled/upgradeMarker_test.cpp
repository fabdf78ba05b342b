// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The marker's text: its first word, and the rest without it.

#include "upgradeMarker.h"

#include <gtest/gtest.h>

TEST(UpgradeMarker, ListsAWordOnEachLine)
{
    struct Row {
        const char* text;
        const char* word;
        const char* rest;
        bool isEmpty;
    };
    const Row rows[] = {
        {"1\n2\nall\n", "1", "2\nall\n", false},
        {"2\nall\n", "2", "all\n", false},
        {"all\n", "all", "", false},
        {"all", "all", "", false},
        {"1\n2", "1", "2", false},
        {"\n\n1\n\n2\n\n", "1", "2\n\n", false},
        {"all\n\n", "all", "", false},
        {"", "", "", true},
        {"\n\n", "", "", true},
        {" 1 \n2\n", " 1 ", "2\n", false},
        {"1\r\n2\r\n", "1\r", "2\r\n", false},
    };
    for (const Row& row : rows) {
        const UpgradeMarker marker = ParseMarker(row.text);
        EXPECT_EQ(marker.word, row.word) << row.text;
        EXPECT_EQ(marker.rest, row.rest) << row.text;
        EXPECT_EQ(marker.isEmpty, row.isEmpty) << row.text;
    }
}
