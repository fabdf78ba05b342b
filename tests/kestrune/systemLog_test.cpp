// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The system log: what it gets of a run, and what it must never get.

#include <gmock/gmock.h>

#include "logSocket.h"
#include "phoneImage.h"

TEST(SystemLog, TheSystemLogGetsEveryReportUnderTheProgramsName)
{
    // Priority: facility user is 8, and the level is added.
    PhoneImage phone;
    const ScratchFolder folder;
    const LogSocket log(folder.Path("log"));
    phone.AddSandboxOptions({"--bind", folder.Path("log"), "/dev/log"});
    phone.RunWith({});
    EXPECT_THAT(log.Messages(), testing::ElementsAre("<14>kestrune: Usage: \n#/kestrune [all|dev|pwd]\n"));

    phone.PutFolder("/config/user/user.ini"); // which does not load
    phone.Run("pwd");
    EXPECT_THAT(log.Messages(), testing::ElementsAre("<12>kestrune: Can's load user's inifile!\n"));
    EXPECT_THAT(phone.Reports(), testing::ElementsAre("app_log 60/4: Can's load user's inifile!"));
}

TEST(SystemLog, ASystemLogThatNobodyReadsHoldsUpNothing)
{
    // More certificates than the daemon's queue has places; each reports itself.
    PhoneImage phone;
    const ScratchFolder folder;
    const LogSocket log(folder.Path("log"));
    phone.AddSandboxOptions({"--bind", folder.Path("log"), "/dev/log"});
    constexpr std::size_t kCertificates = 700;
    for (std::size_t i = 0; i < kCertificates; ++i)
        phone.Put("/phone/factory/certs/phoneca/" + std::to_string(i) + ".pem", "");
    phone.PutFolder("/config/certs/phoneca");
    phone.Run("dev");
    EXPECT_THAT(phone.Reports(), testing::Contains(testing::HasSubstr("Sync cert")).Times(kCertificates));
    EXPECT_LT(log.Messages().size(), kCertificates) << "the queue held them all: this test says nothing";
}

TEST(SystemLog, TheSystemLogNeverGetsTraces)
{
    PhoneImage phone;
    const ScratchFolder folder;
    const LogSocket log(folder.Path("log"));
    phone.AddSandboxOptions({"--bind", folder.Path("log"), "/dev/log"});
    phone.Put("/phone/resource/kestrune.xml", "<table/>\n");
    phone.Put("/config/user/user.ini", "[PhoneSetting]\nEnLock=1\n[Account]\nPassword=secret\n");
    phone.Put("/phone/factory/user/user.ini", "[PhoneSetting]\nEnLock=0\n");
    phone.Put("/phone/resource/encryptconfig.xml",
              "<list><entry file=\"/config/user/user.ini\" section=\"Account\" key=\"Password\"/></list>\n");
    phone.Run("all");
    EXPECT_THAT(phone.Reports(), testing::Contains("etlTrace 2: Decrypt:(secret)->()"));
    EXPECT_THAT(log.Messages(), testing::ElementsAre("<12>kestrune: No config translate record!\n"));
}
