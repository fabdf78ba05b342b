// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "secrets/secretSearch.h"

#include <gmock/gmock.h>

namespace
{

const std::string kM = kMask;

std::string Hide(const std::vector<std::string>& secrets, const std::string& text)
{
    SecretSearch search;
    for (const std::string& secret : secrets)
        search.Add(secret);
    return search.Hide(text);
}

TEST(SecretSearch, SixBytesAreHiddenInsideOfWords)
{
    EXPECT_EQ(Hide({"kestre"}, "xkestrey kestre"), "x" + kM + "y " + kM);
    EXPECT_EQ(Hide({"kestr\xc3\xa9l8"}, "/kestr\xc3\xa9l8/"), "/" + kM + "/");
}

TEST(SecretSearch, FiveBytesAreHiddenAsWords)
{
    EXPECT_EQ(Hide({"kestr"}, "xkestr kestry kestr1 \xc3\xa9kestr kestr kestr."),
              "xkestr kestry kestr1 \xc3\xa9kestr " + kM + " " + kM + ".");
    EXPECT_EQ(Hide({"4711"}, "4711"), kM);
}

TEST(SecretSearch, ThreeBytesStay)
{
    EXPECT_EQ(Hide({"abc", ""}, "abc"), "abc");
}

TEST(SecretSearch, OverlappingSecretsBecomeOneMask)
{
    EXPECT_EQ(Hide({"plover-nest", "nest-heron"}, "a plover-nest-heron b"), "a " + kM + " b");
    EXPECT_EQ(Hide({"plover", "plover-nest"}, "plover-nest plover"), kM + " " + kM);
    EXPECT_EQ(Hide({"plover"}, "ploverplover"), kM + kM);
}

TEST(SecretSearch, FindsAllInAText)
{
    SecretSearch search;
    for (const char* secret : {"plover", "plover-nest", "heron8", "nest"})
        search.Add(secret);
    EXPECT_THAT(search.FindIn("a plover-nest"), testing::ElementsAre("nest", "plover", "plover-nest"));
}

} // namespace
