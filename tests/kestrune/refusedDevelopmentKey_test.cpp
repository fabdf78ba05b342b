// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// A program built with KESTRUNE_REFUSE_DEVELOPMENT_KEY: without a key file every value keeps its form, but for what the
// development key has enciphered, which can still be deciphered. With a key file it is the same program as without the option.

#include <gmock/gmock.h>

#include "logSocket.h"
#include "phoneImage.h"

namespace
{

constexpr char kToken[] = "NxCtIZlb8N+vWevKAOqtDvzgV0IboWX12AuHSQ"; // "hello, phone", with the development key

std::string UserIni(const std::string& lock, const std::string& plain, const std::string& secret)
{
    return "[PhoneSetting]\nEnLock=" + lock + "\n[Web]\nPlain=" + plain + "\nSecret=" + secret + "\nMoved=" + plain +
           "\n[Feature]\nRingbackTimeout=90\n";
}

/// A phone whose table and list name a plain value, one that the development key has enciphered, and a copy.
class RefusedDevelopmentKey : public testing::Test
{
protected:
    RefusedDevelopmentKey()
    {
        phone_.AddSandboxOptions({"--ro-bind", KESTRUNE_REFUSING_PROGRAM, "/kestrune"}); // over the other one
        phone_.AddSandboxOptions({"--bind", folder_.Path("log"), "/dev/log"});
        phone_.Put("/config/version.ini", "[SyncConfig]\nbEnableFromOld=0\n");
        const std::string place = "='/config/user/user.ini' ";
        phone_.Put("/phone/resource/encryptconfig.xml", "<l><e file" + place + "section='Web' key='Plain'/><e file" +
                                                            place + "section='Web' key='Secret'/></l>");
        const std::string record = "<r srcFile" + place + "srcSec='Web' dstEncrypt='1' srcKey=";
        phone_.Put("/phone/resource/kestrune.xml",
                   "<t>" + record + "'Plain'/>" + record + "'Secret'/>" + record + "'Plain' dstKey='Moved'/></t>");
    }

    void PutLocks(const std::string& user, const std::string& factory)
    {
        phone_.Put(kUserIni, UserIni(user, "hello, phone", kToken));
        phone_.Put("/phone/factory/user/user.ini", "[PhoneSetting]\nEnLock=" + factory + "\n");
    }

    ScratchFolder folder_;
    LogSocket log_{folder_.Path("log")};
    PhoneImage phone_;
};

const std::string kWarning =
    "<12>kestrune: no cipher key /phone/factory/certs/pwcipher.key: passwords are not enciphered";

} // namespace

TEST_F(RefusedDevelopmentKey, TheTablePassEnciphersNothing)
{
    PutLocks("1", "1");
    phone_.Run("dev");
    phone_.ExpectNothingElseChanged();
    EXPECT_THAT(log_.Messages(), testing::ElementsAre(kWarning, testing::HasSubstr("mode dev: ")));
    EXPECT_THAT(phone_.Reports(), testing::Not(testing::Contains(testing::HasSubstr("cipher key"))));
}

TEST_F(RefusedDevelopmentKey, ThePasswordPassEnciphersNothing)
{
    PutLocks("0", "1");
    phone_.Run("pwd");
    phone_.ExpectNothingElseChanged();
    EXPECT_THAT(log_.Messages(), testing::ElementsAre(kWarning, testing::HasSubstr("mode pwd: ")));
}

TEST_F(RefusedDevelopmentKey, WhatItHasEncipheredIsDeciphered)
{
    PutLocks("1", "0");
    phone_.Run("pwd");
    phone_.Expect(kUserIni, UserIni("1", "hello, phone", "hello, phone"));
    phone_.ExpectNothingElseChanged();
    EXPECT_THAT(log_.Messages(), testing::ElementsAre(testing::HasSubstr("mode pwd: ")));
}

TEST_F(RefusedDevelopmentKey, AKeyFileEnciphers)
{
    PutLocks("0", "1");
    phone_.Put("/phone/factory/certs/pwcipher.key", "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f"
                                                    "202122232425262728292a2b2c2d2e2f303132333435363738393a3b3c3d3e3f");
    phone_.Put("/phone/resource/encryptconfig.xml",
               "<l><e file='/config/user/user.ini' section='Web' key='Plain'/></l>");
    phone_.Run("pwd");
    std::string expected = UserIni("0", "hello, phone", kToken);
    expected.replace(expected.find("hello, phone"), 12, "b+6Fw7CjnGbNEMQL7aMWDWn0Dt9xGNoS1vLP4Q");
    phone_.Expect(kUserIni, expected);
    phone_.ExpectNothingElseChanged();
    EXPECT_THAT(log_.Messages(), testing::ElementsAre(testing::HasSubstr("mode pwd: ")));
}
