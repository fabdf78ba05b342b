// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "phoneImage/normalPath.h"

#include <gtest/gtest.h>

TEST(NormalPath, EachSpellingOfAFileGivesTheSamePath)
{
    for (const char* spelling :
         {"/config/user/user.ini", "//config/user/user.ini", "/config//user///user.ini", "/config/./user/user.ini",
          "/config/data/../user/user.ini", "/../config/user/user.ini"})
        EXPECT_EQ(NormalPath(spelling), "/config/user/user.ini") << spelling;
}

TEST(NormalPath, ARelativePathStaysRelative)
{
    EXPECT_EQ(NormalPath("./user.ini"), "user.ini");
    EXPECT_EQ(NormalPath("../user.ini"), "../user.ini");
    EXPECT_EQ(NormalPath(""), "");
}

TEST(NormalPath, DotsInANameAreAPartOfIt)
{
    EXPECT_EQ(NormalPath("/config/.hidden..ini"), "/config/.hidden..ini");
    EXPECT_EQ(NormalPath("/config/user..ini"), "/config/user..ini");
}
