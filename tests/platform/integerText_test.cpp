// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Numbers in configuration files: read as strtol does in base 10, clamped to 32 bits on every machine.

#include "integerText.h"

#include <gtest/gtest.h>
#include <limits>

namespace
{

constexpr std::int32_t kLeast = -2147483647 - 1;
constexpr std::int32_t kMost = 2147483647;

} // namespace

TEST(IntegerTextParseInt32, ReadsASignAndDigitsAndStopsAtTheFirstOtherCharacter)
{
    struct Row {
        const char* text;
        std::int32_t expected;
    };
    const Row rows[] = {
        {"", 0},
        {" ", 0},
        {"0", 0},
        {"-0", 0},
        {"7", 7},
        {"+7", 7},
        {"-7", -7},
        {"007", 7},
        {"010", 10},
        {"12abc", 12},
        {"12 34", 12},
        {"1.9", 1},
        {"1e3", 1},
        {"1,000", 1},
        {"0x10", 0},
        {"abc", 0},
        {"abc12", 0},
        {"+", 0},
        {"-", 0},
        {"--5", 0},
        {"+-5", 0},
        {"-+5", 0},
        {"- 5", 0},
        {"\"5\"", 0},
        {"5;", 5},
        {"5\r", 5},
        {"  12", 12},
        {"\t-12 ", -12},
        {"\n\v\f\r 12", 12},
        {"\xC2\xA0"
         "5",
         0},
        {"\xD9\xA3", 0},
        {"true", 0},
        {"1000000000", 1000000000},
    };
    for (const Row& row : rows)
        EXPECT_EQ(ParseInt32(row.text), row.expected) << "text \"" << row.text << '"';
}

TEST(IntegerTextParseInt32, ClampsToTheSigned32BitRange)
{
    struct Row {
        const char* text;
        std::int32_t expected;
    };
    const Row rows[] = {
        {"2147483646", kMost - 1},
        {"2147483647", kMost},
        {"2147483648", kMost},
        {"4294967295", kMost},
        {"4294967296", kMost},
        {"4294967297", kMost},
        {"9223372036854775807", kMost},
        {"9223372036854775808", kMost},
        {"18446744073709551617", kMost},
        {"99999999999999999999999999999999999999999999", kMost},
        {"99999999999999999999999 and more", kMost},
        {"0000000000000000000000000000005", 5},
        {"-2147483647", kLeast + 1},
        {"-2147483648", kLeast},
        {"-2147483649", kLeast},
        {"-4294967297", kLeast},
        {"-9223372036854775808", kLeast},
        {"-9223372036854775809", kLeast},
        {"-99999999999999999999999999999999999999999999", kLeast},
    };
    for (const Row& row : rows)
        EXPECT_EQ(ParseInt32(row.text), row.expected) << "text \"" << row.text << '"';
}

TEST(IntegerTextClampToInt32, GivesTheNearestValueOfTheRange)
{
    struct Row {
        std::int64_t value;
        std::int32_t expected;
    };
    const Row rows[] = {
        {0, 0},
        {-1, -1},
        {2147483646, kMost - 1},
        {2147483647, kMost},
        {2147483648, kMost},
        {4294967296, kMost},
        {std::numeric_limits<std::int64_t>::max(), kMost},
        {-2147483647, kLeast + 1},
        {-2147483648, kLeast},
        {-2147483649, kLeast},
        {std::numeric_limits<std::int64_t>::min(), kLeast},
    };
    for (const Row& row : rows)
        EXPECT_EQ(ClampToInt32(row.value), row.expected) << row.value;
}
