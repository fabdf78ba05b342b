// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Every value of the translation table goes through this step. The machine that runs these tests has no key file, so
// the development key is used.

#include "convertPasswordValue.h"

#include <gtest/gtest.h>

#include "bundledPlatform.h"

namespace
{

constexpr bool kEnciphered = true;
constexpr bool kPlain = false;

constexpr char kHello[] = "hello, phone";
constexpr char kHelloToken[] = "NxCtIZlb8N+vWevKAOqtDvzgV0IboWX12AuHSQ";

// The longest text that can be enciphered, and its token, which is as long as the buffer allows.
const std::string kLong(103, 'x');
const std::string kLongToken =
    "q3CVjm9u+cSPKkl9psxtiBqsYliH3bjctUkRauPre4vBxdNajVCpttwwM1byv8qaipz7srLb1c+l9NhIYinx2DT3TRO7HNPeWC10UXzGmsbKQNujIM"
    "wVfNiIEMLEvXZXugGjaeMtWRxPgU1PtucqyEXkJj1Rglk";

struct Row {
    const char* what;
    std::string input;
    std::string output;
    std::string printed;
};

void ExpectRow(const Row& row, bool wantEnciphered)
{
    SCOPED_TRACE(row.what);
    std::string output = "what was there before";
    testing::internal::CaptureStdout();
    ConvertPasswordValue(&row.input, output, wantEnciphered);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), row.printed);
    EXPECT_EQ(output, row.output);
}

std::string Line(const std::string& buffer, int result)
{
    return "lpOutPassword=" + buffer + ", " + std::to_string(result) + "\n";
}

} // namespace

TEST(ConvertPasswordValue, WithoutAnInputNothingHappens)
{
    for (const bool wantEnciphered : {kEnciphered, kPlain}) {
        std::string output = "what was there before";
        testing::internal::CaptureStdout();
        ConvertPasswordValue(/*input=*/nullptr, output, wantEnciphered);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
        EXPECT_EQ(output, "what was there before");
    }
}

TEST(ConvertPasswordValue, TheEncipheredFormOfAValue)
{
    if (!kHasBundledPlatform)
        GTEST_SKIP() << "rests on the texts of the bundled cipher";
    const std::string eightBit = "gr\xC3\xBC\xC3\x9F";
    const std::string longEightBit = std::string(159, 'x') + "\x80";
    const Row rows[] = {
        {"empty: counts as enciphered", "", "", Line("", 0)},
        {"plain", kHello, kHelloToken, Line(kHelloToken, 0)},
        {"enciphered", kHelloToken, kHelloToken, Line(kHelloToken, 0)},
        {"103 bytes", kLong, kLongToken, Line(kLongToken, 0)},
        {"103 bytes enciphered", kLongToken, kLongToken, Line(kLongToken, 0)},
        {"104 bytes: stays plain", std::string(104, 'x'), std::string(104, 'x'), Line(std::string(104, 'x'), 0)},
        {"159 bytes: stays plain", std::string(159, 'x'), std::string(159, 'x'), Line(std::string(159, 'x'), 0)},
        {"160 bytes: does not fit", std::string(160, 'x'), "", Line("", 0)},
        {"5000 bytes: does not fit", std::string(5000, 'x'), "", Line("", 0)},
        {"8-bit: stays plain", eightBit, eightBit, Line(eightBit, 0)},
        {"8-bit of 160 bytes: does not fit", longEightBit, "", Line("", 0)},
        {"a padded token is a plain text",
         "OWOyiHU9xaqhqGk4gLL2YOw=", "YPpESta/R+JI9ojWfIm63B1TOJBcIWhAncxSS3c9NWXiP/Qh75gSRA",
         Line("YPpESta/R+JI9ojWfIm63B1TOJBcIWhAncxSS3c9NWXiP/Qh75gSRA", 0)},
        {"format characters", "%s%n%d", "Pv3RTx2qip6/Ilfdmn3CpHXuYvfkKA", Line("Pv3RTx2qip6/Ilfdmn3CpHXuYvfkKA", 0)},
    };
    for (const Row& row : rows)
        ExpectRow(row, kEnciphered);
}

TEST(ConvertPasswordValue, ThePlainFormOfAValue)
{
    if (!kHasBundledPlatform)
        GTEST_SKIP() << "rests on the texts of the bundled cipher";
    // The cipher leaves the buffer empty if it refuses a text, so the line does not show a value that is kept.
    const std::string kept = Line("", -1);
    const std::string twice = "eB/ZoLFj99qSyKAwH8JR7eNnWv3kbcCmx2/I3cTGSAnRkfusBHgw97AUlepoVCJgcNKXnzHB";
    const Row rows[] = {
        {"empty: deciphers to the empty text", "", "", Line("", 0)},
        {"enciphered", kHelloToken, kHello, Line(kHello, 0)},
        {"enciphered twice", twice, kHelloToken, Line(kHelloToken, 0)},
        {"103 bytes enciphered", kLongToken, kLong, Line(kLong, 0)},
        {"format characters enciphered", "Pv3RTx2qip6/Ilfdmn3CpHXuYvfkKA", "%s%n%d", Line("%s%n%d", 0)},
        {"plain", kHello, kHello, kept},
        {"format characters", "%s%n%d", "%s%n%d", kept},
        {"103 bytes", kLong, kLong, kept},
        {"160 bytes", std::string(160, 'x'), std::string(160, 'x'), kept},
        {"5000 bytes", std::string(5000, 'x'), std::string(5000, 'x'), kept},
        {"8-bit", "gr\xC3\xBC\xC3\x9F", "gr\xC3\xBC\xC3\x9F", kept},
        {"a padded token", "OWOyiHU9xaqhqGk4gLL2YOw=", "OWOyiHU9xaqhqGk4gLL2YOw=", kept},
        {"a token of the empty text", "6neBoF1/GPlgbXA+a98TcQ", "6neBoF1/GPlgbXA+a98TcQ", kept},
        {"a token of an 8-bit text", "LxHB29DNLK0pqocX85HM6VyTAg", "LxHB29DNLK0pqocX85HM6VyTAg", kept},
    };
    for (const Row& row : rows)
        ExpectRow(row, kPlain);
}

TEST(ConvertPasswordValue, EitherFormIsKeptOnASecondConversion)
{
    const std::string inputs[] = {"", kHello, kHelloToken, kLong, kLongToken, std::string(104, 'x'), "\x80", "%s"};
    for (const std::string& input : inputs) {
        SCOPED_TRACE(input);
        for (const bool wantEnciphered : {kEnciphered, kPlain}) {
            std::string once;
            std::string again;
            testing::internal::CaptureStdout();
            ConvertPasswordValue(&input, once, wantEnciphered);
            ConvertPasswordValue(&once, again, wantEnciphered);
            (void)testing::internal::GetCapturedStdout();
            EXPECT_EQ(again, once);
        }
    }
}

TEST(ConvertPasswordValue, AValueWithAZeroByteIsKeptWholeForTheStoreToRefuse)
{
    const std::string input("secret\0rest", 11);
    for (const bool wantEnciphered : {false, true}) {
        std::string output;
        testing::internal::CaptureStdout();
        ConvertPasswordValue(&input, output, wantEnciphered);
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(output, input) << "wantEnciphered " << wantEnciphered;
    }
}
