// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The certificate sync: whole runs of mode "dev" on a phone that needs no other change.

#include "syncFactoryCerts.h"

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "phoneImage.h"

namespace fs = std::filesystem;

namespace
{

const std::string kFactory = "/phone/factory/certs/phoneca/";
const std::string kUser = "/config/certs/phoneca/";

using Lines = std::vector<std::string>;

class CertPhone : public PhoneImage
{
public:
    CertPhone()
    {
        Put("/config/user/user.ini", "[Feature]\nRingbackTimeout=90\n");
        Put("/config/version.ini", "[SyncConfig]\nbEnableFromOld=0\n");
    }

    /// The reports of the last run, without the messages of the shell and its copy command.
    Lines Logged() const
    {
        Lines logged;
        for (const std::string& report : Reports()) {
            if (report.rfind("app_log ", 0) == 0)
                logged.push_back(report);
        }
        return logged;
    }
};

std::string SyncLine(const std::string& name)
{
    return "app_log 60/6: Sync cert cp /phone/factory/certs/phoneca/" + name + " /config/certs/phoneca/" + name;
}

/// The names of a folder in directory order.
Lines NamesIn(const std::string& path)
{
    Lines names;
    for (const fs::directory_entry& entry : fs::directory_iterator(path))
        names.push_back(entry.path().filename().string());
    return names;
}

} // namespace

TEST(SyncFactoryCerts, OnlyTheCertificateThatIsMissingIsCopied)
{
    CertPhone phone;
    phone.Put(kFactory + "one.pem", "one");
    phone.Put(kFactory + "two.pem", "two\n\xFF");
    phone.Put(kUser + "one.pem", "the user's own");
    phone.Put(kUser + "three.pem", "three");
    phone.Run("dev");
    EXPECT_EQ(phone.Reports(), Lines{SyncLine("two.pem")});
    phone.Expect(kUser + "two.pem", "two\n\xFF");
    phone.ExpectNothingElseChanged();

    phone.Run("dev");
    EXPECT_THAT(phone.Reports(), testing::IsEmpty());
    phone.ExpectNothingElseChanged();
}

TEST(SyncFactoryCerts, WhatIsThereIsKeptWhateverItHolds)
{
    CertPhone phone;
    for (const char* name : {"empty.pem", "other.pem", "folder.pem", ".hidden"})
        phone.Put(kFactory + name, "factory");
    phone.Put(kUser + "empty.pem", "");
    phone.Put(kUser + "other.pem", "other");
    phone.Put(kUser + ".hidden", "hidden");
    phone.PutFolder(kUser + "folder.pem");
    phone.Run("dev");
    EXPECT_THAT(phone.Reports(), testing::IsEmpty());
    phone.ExpectNothingElseChanged();
}

TEST(SyncFactoryCerts, WithoutFactoryCertificatesNothingHappens)
{
    CertPhone noFolder;
    noFolder.PutFolder(kUser);
    noFolder.Run("dev");
    EXPECT_THAT(noFolder.Reports(), testing::IsEmpty());
    noFolder.ExpectNothingElseChanged();

    CertPhone noFolderAtAll;
    noFolderAtAll.Run("dev");
    EXPECT_THAT(noFolderAtAll.Reports(), testing::IsEmpty());
    noFolderAtAll.ExpectNothingElseChanged();

    CertPhone emptyFolder;
    emptyFolder.PutFolder(kFactory);
    emptyFolder.Put(kUser + "one.pem", "one");
    emptyFolder.Run("dev");
    EXPECT_THAT(emptyFolder.Reports(), testing::IsEmpty());
    emptyFolder.ExpectNothingElseChanged();

    CertPhone noRealFolder;
    noRealFolder.Put("/phone/factory/certs/phoneca", "a file");
    noRealFolder.PutFolder(kUser);
    noRealFolder.Run("dev");
    EXPECT_THAT(noRealFolder.Reports(), testing::IsEmpty());
    noRealFolder.ExpectNothingElseChanged();
}

TEST(SyncFactoryCerts, WithoutTheUsersFolderEveryCopyIsTriedInEveryRunAndFails)
{
    CertPhone phone;
    phone.Put(kFactory + "one.pem", "one");
    phone.Put(kFactory + "two.pem", "two");
    for (int run = 0; run < 2; ++run) {
        phone.Run("dev");
        EXPECT_THAT(phone.Logged(), testing::UnorderedElementsAre(SyncLine("one.pem"), SyncLine("two.pem")));
        phone.ExpectNothingElseChanged();
    }
}

TEST(SyncFactoryCerts, AnEntryThatTheCopyCommandRefusesDoesNotStopTheOthers)
{
    CertPhone phone;
    phone.Put(kFactory + "folder/inside.pem", "inside");
    for (const char* name : {"a.pem", "b.pem", "c.pem", "z.pem", ".hidden.pem"})
        phone.Put(kFactory + name, name);
    phone.PutFolder(kUser);
    phone.Run("dev");
    EXPECT_THAT(phone.Logged(),
                testing::UnorderedElementsAre(SyncLine("folder"), SyncLine("a.pem"), SyncLine("b.pem"),
                                              SyncLine("c.pem"), SyncLine("z.pem"), SyncLine(".hidden.pem")));
    for (const char* name : {"a.pem", "b.pem", "c.pem", "z.pem", ".hidden.pem"})
        phone.Expect(kUser + name, name);
    phone.ExpectNothingElseChanged();

    phone.Run("dev");
    EXPECT_EQ(phone.Logged(), Lines{SyncLine("folder")});
    phone.ExpectNothingElseChanged();
}

TEST(SyncFactoryCerts, ALinkIsCopiedAsTheFileThatItNames)
{
    CertPhone phone;
    phone.Put("/phone/factory/store.pem", "stored");
    phone.PutFolder(kFactory);
    phone.PutFolder(kUser);
    fs::create_symlink("/phone/factory/store.pem", phone.HostPath(kFactory + "link.pem"));
    phone.Run("dev");
    EXPECT_EQ(phone.Reports(), Lines{SyncLine("link.pem")});
    phone.Expect(kUser + "link.pem", "stored");
    EXPECT_FALSE(fs::is_symlink(phone.HostPath(kUser + "link.pem")));
    phone.ExpectNothingElseChanged();
}

TEST(SyncFactoryCerts, NamesGoToTheShellUnquoted)
{
    CertPhone phone;
    phone.Put(kFactory + "my cert.pem", "blank");
    phone.PutFolder(kUser);
    phone.Run("dev");
    EXPECT_EQ(phone.Logged(), Lines{SyncLine("my cert.pem")}); // three sources and no folder to copy them to
    phone.ExpectNothingElseChanged();

    phone.Remove(kFactory + "my cert.pem");
    phone.Put(kFactory + "x;echo said by the shell;y", "shell");
    phone.Run("dev");
    EXPECT_EQ(phone.Logged(), Lines{SyncLine("x;echo said by the shell;y")});
    EXPECT_THAT(phone.Output(), testing::Contains("said by the shell"));

    phone.Remove(kFactory + "x;echo said by the shell;y");
    phone.Put(kFactory + "%s%n.pem", "format");
    phone.Run("dev");
    EXPECT_EQ(phone.Reports(), Lines{SyncLine("%s%n.pem")});
    phone.Expect(kUser + "%s%n.pem", "format");
    phone.ExpectNothingElseChanged();
}

TEST(SyncFactoryCerts, WhatWasPrintedBeforeStandsBeforeWhatTheCommandPrints)
{
    CertPhone phone;
    phone.Put(kFactory + "x;echo said by the shell;y", "shell");
    phone.PutFolder(kUser);
    phone.Run("dev");
    EXPECT_EQ(phone.Output(), (Lines{"The file [/phone/resource/kestrune.xml] not exist !", "said by the shell",
                                     "said by the shell"})); // the command contains the name twice
}

TEST(SyncFactoryCerts, EachCopyIsWaitedForBeforeTheNextReportAndTheSave)
{
    // The copy command of this phone is slow, and finally reports the content of the phone.
    const ScratchFolder folder;
    WriteBytes(folder.Path("cp"), "#!/bin/sh\nsleep 0.3\ncat \"$1\" > \"$2\"\n"
                                  "echo \"copied $2, $(grep -c EnLock /config/user/user.ini) EnLock\" >&2\n");
    fs::permissions(folder.Path("cp"), fs::perms::owner_all);
    CertPhone phone;
    phone.AddSandboxOptions({"--ro-bind", folder.Path("cp"), "/usr/bin/cp"});
    phone.Put(kFactory + "one.pem", "one");
    phone.Put(kFactory + "two.pem", "two");
    phone.PutFolder(kUser);
    phone.Put("/phone/factory/user/user.ini", "");
    phone.Put("/phone/resource/kestrune.xml",
              "<t><r dstFile='/config/user/user.ini' dstSec='Feature' dstKey='EnLock'/></t>");
    phone.Run("all");

    Lines expected;
    for (const std::string& name : NamesIn(phone.HostPath(kFactory))) {
        expected.push_back(SyncLine(name));
        expected.push_back("copied " + kUser + name + ", 0 EnLock"); // the run's changes are not yet made
    }
    expected.push_back("app_log 60/6: No need trans password file !! Current status [decrypt]");
    EXPECT_EQ(phone.Reports(), expected);
    phone.Expect("/config/user/user.ini", "[Feature]\nRingbackTimeout=90\nEnLock=\n");
    phone.Expect(kUser + "one.pem", "one");
    phone.Expect(kUser + "two.pem", "two");
    phone.ExpectNothingElseChanged();
}

TEST(SyncFactoryCerts, CopiesFollowTheOrderOfTheFolder)
{
    CertPhone phone;
    for (int number = 0; number < 30; ++number)
        phone.Put(kFactory + "cert" + std::to_string(number * 7 % 30) + ".pem", std::to_string(number));
    phone.PutFolder(kUser);
    Lines expected;
    for (const std::string& name : NamesIn(phone.HostPath(kFactory)))
        expected.push_back(SyncLine(name));
    ASSERT_EQ(expected.size(), 30u);
    phone.Run("dev");
    EXPECT_EQ(phone.Reports(), expected);
}

TEST(SyncFactoryCertsListDirectoryEntries, EveryEntryOfAnyKindButTheFolderItselfAndItsParent)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("file"), "");
    WriteBytes(folder.Path(".hidden"), "");
    WriteBytes(folder.Path("..."), "");
    WriteBytes(folder.Path("..a"), "");
    WriteBytes(folder.Path("with blank\n"), "");
    WriteBytes(folder.Path("sub/inside"), "");
    fs::create_symlink("nowhere", folder.Path("link"));
    for (const std::string& path : {folder.Path(), folder.Path() + "/"}) {
        Lines entries = {"what was there before"};
        ListDirectoryEntries(path.c_str(), entries);
        EXPECT_THAT(entries,
                    testing::UnorderedElementsAre("file", ".hidden", "...", "..a", "with blank\n", "sub", "link"));
        EXPECT_EQ(entries, NamesIn(folder.Path()));
    }
}

TEST(SyncFactoryCertsListDirectoryEntries, AFolderThatCannotBeOpenedHasNone)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("file"), "");
    for (const std::string& path : {folder.Path("missing"), folder.Path("file"), std::string()}) {
        Lines entries = {"what was there before"};
        ListDirectoryEntries(path.c_str(), entries);
        EXPECT_THAT(entries, testing::IsEmpty()) << path;
    }
}

TEST(SyncFactoryCertsListDirectoryEntries, ThereIsNoUpperLimit)
{
    const ScratchFolder folder;
    for (int number = 0; number < 2000; ++number)
        WriteBytes(folder.Path(std::to_string(number)), "");
    Lines entries;
    ListDirectoryEntries(folder.Path().c_str(), entries);
    std::sort(entries.begin(), entries.end());
    EXPECT_EQ(entries.size(), 2000u);
    EXPECT_EQ(std::unique(entries.begin(), entries.end()), entries.end());
}
