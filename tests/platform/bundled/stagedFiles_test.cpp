// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// A run sees its own changes under every name that leads to a file, and the device has none of them before the commit.

#include "stagedFiles.h"

#include <gmock/gmock.h>

#include "fileBytes.h"
#include "fileHelper.h"
#include "iniFile.h"
#include "profile.h"
#include "replacementFixture.h"

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

class StagedFilesTest : public ReplacementFixture
{
protected:
    StagedFilesTest() { BeginStaging(); }
    ~StagedFilesTest() override { EndStaging(); }

    /// The text that the run reads, or "missing" or "unreadable".
    std::string Seen(const std::string& name) const
    {
        std::string bytes;
        switch (ReadFile(folder_.Path(name).c_str(), bytes)) {
        case ReadResult::Missing:
            return "missing";
        case ReadResult::Unreadable:
            return "unreadable";
        case ReadResult::TooLarge:
            return "too large";
        case ReadResult::Done:
            break;
        }
        return bytes;
    }

    bool Exists(const std::string& name) const
    {
        return ETL_MiscHelper::pathFileExist(folder_.Path(name).c_str()) != 0;
    }

    bool Remove(const std::string& name) const { return RemoveFile(folder_.Path(name).c_str()); }

    bool Copy(const std::string& to, const std::string& from) const
    {
        return ETL_SubClass::etlCopyFile(folder_.Path(to).c_str(), folder_.Path(from).c_str()) != 0;
    }
};

} // namespace

TEST_F(StagedFilesTest, ASaveIsSeenByTheRunAndNotOnTheDevice)
{
    Put("file", "old");
    EXPECT_TRUE(Replace("file", "new"));
    EXPECT_TRUE(Replace("made", "made"));
    EXPECT_EQ(Seen("file"), "new");
    EXPECT_EQ(Seen("made"), "made");
    EXPECT_TRUE(Exists("made"));
    EXPECT_EQ(Get("file"), "old");
    EXPECT_THAT(Names(), ElementsAre("file"));
    EndStaging();
    EXPECT_EQ(Seen("file"), "old");
    EXPECT_FALSE(Exists("made"));
}

TEST_F(StagedFilesTest, ASaveIsSeenUnderEveryNameThatLeadsToTheFile)
{
    Put("deep/file", "old");
    Link("link", "deep/file");
    Link("absolute", folder_.Path("deep/file"));
    Link("chain", "link");
    Link("folder", "deep");
    const char* names[] = {"deep/file",           "link",      "absolute", "chain", "folder/file",
                           "deep/../folder/file", "deep//file"};
    for (const std::string saved : names) {
        EXPECT_TRUE(Replace(saved, "by " + saved)) << saved;
        for (const char* read : names)
            EXPECT_EQ(Seen(read), "by " + saved) << read;
    }
    EXPECT_EQ(StagedFiles().size(), 1u);
    EXPECT_EQ(LinkTarget("link"), "deep/file");
}

TEST_F(StagedFilesTest, AnotherHardLinkIsAnotherFile)
{
    Put("file", "old");
    fs::create_hard_link(folder_.Path("file"), folder_.Path("other"));
    EXPECT_TRUE(Replace("file", "new"));
    EXPECT_EQ(Seen("other"), "old");
}

TEST_F(StagedFilesTest, ALinkToAFileThatTheRunMakesLeadsToIt)
{
    Link("link", "made");
    EXPECT_EQ(Seen("link"), "missing");
    EXPECT_TRUE(Replace("link", "by link"));
    EXPECT_EQ(Seen("made"), "by link");
    EXPECT_TRUE(Exists("link"));
    EXPECT_THAT(Names(), ElementsAre("link"));
}

TEST_F(StagedFilesTest, ARemovalIsSeenByTheRunAndNotOnTheDevice)
{
    Put("file", "old");
    Link("link", "file");
    EXPECT_TRUE(Remove("file"));
    EXPECT_EQ(Seen("file"), "missing");
    EXPECT_EQ(Seen("link"), "missing");
    EXPECT_FALSE(Exists("file"));
    EXPECT_FALSE(Remove("file")) << "it is gone";
    EXPECT_EQ(Get("file"), "old");
}

TEST_F(StagedFilesTest, RemovingALinkLeavesTheFileThatItNames)
{
    Put("file", "old");
    Link("link", "file");
    EXPECT_TRUE(Replace("link", "new"));
    EXPECT_TRUE(Remove("link"));
    EXPECT_EQ(Seen("link"), "missing");
    EXPECT_EQ(Seen("file"), "new");
}

TEST_F(StagedFilesTest, WhatIsSavedAfterItsRemovalIsAFileOfItsOwn)
{
    Put("file", "old");
    Put("source", "copied");
    ASSERT_EQ(chmod(folder_.Path("source").c_str(), 0604), 0);
    EXPECT_TRUE(Remove("file"));
    EXPECT_TRUE(Copy("file", "source"));
    EXPECT_EQ(Seen("file"), "copied");
    ASSERT_EQ(StagedFiles().size(), 1u) << "it keeps its place";
    const StagedFile& staged = StagedFiles().front();
    EXPECT_EQ(staged.state, StagedState::Saved);
    EXPECT_TRUE(staged.isMadeAfresh);
    EXPECT_EQ(staged.origin.newFileMode, 0604u);
}

TEST_F(StagedFilesTest, WhatIsMadeAndRemovedIsMissing)
{
    EXPECT_TRUE(Replace("file", "new"));
    EXPECT_TRUE(Remove("file"));
    EXPECT_EQ(Seen("file"), "missing");
    EXPECT_TRUE(Replace("file", "newer"));
    EXPECT_EQ(Seen("file"), "newer");
}

TEST_F(StagedFilesTest, ACopyHasWhatTheRunHasSaved)
{
    Put("source", "old");
    EXPECT_TRUE(Replace("source", "new"));
    EXPECT_TRUE(Copy("copy", "source"));
    EXPECT_TRUE(Replace("source", "newer"));
    EXPECT_EQ(Seen("copy"), "new");
}

TEST_F(StagedFilesTest, ARemovedFileKnowsItsCopy)
{
    Put("account", "account");
    Put("other", "account");
    EXPECT_TRUE(Copy("copy", "account"));
    EXPECT_TRUE(Remove("account"));
    EXPECT_TRUE(Remove("other"));
    const StagedFile* copy = FindStaged(folder_.Path("copy"));
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(FindStaged(folder_.Path("account"))->copy, copy);
    EXPECT_EQ(FindStaged(folder_.Path("other"))->copy, nullptr);
}

TEST_F(StagedFilesTest, ACopyThatFailsHoldsNoRemovalBack)
{
    Put("account", "account");
    Put("folder/inner", "");
    EXPECT_FALSE(Copy("folder", "account"));
    EXPECT_TRUE(Remove("account"));
    EXPECT_EQ(FindStaged(folder_.Path("account"))->copy, nullptr);
}

TEST_F(StagedFilesTest, ACopyOverALinkToItsSourceTakesTheLinksPlace)
{
    for (const char* target : {"account", "chain"}) {
        Put("account", "account");
        Link("chain", "account");
        Link("link", target);
        EXPECT_TRUE(Copy("link", "account"));
        EXPECT_TRUE(Remove("account"));
        EXPECT_EQ(Seen("link"), "account") << target;
        EXPECT_TRUE(FindStaged(folder_.Path("link"))->isMadeAfresh);
        EndStaging();
        BeginStaging();
        fs::remove(folder_.Path("link"));
        fs::remove(folder_.Path("chain"));
    }
}

TEST_F(StagedFilesTest, BytesThatTheDeviceHasAreNotKept)
{
    Put("file", "same");
    EXPECT_TRUE(Replace("file", "same"));
    ASSERT_EQ(StagedFiles().size(), 1u);
    EXPECT_EQ(StagedFiles().front().state, StagedState::Touched);
    EXPECT_EQ(Seen("file"), "same");
    EXPECT_TRUE(Replace("file", "other"));
    EXPECT_EQ(Seen("file"), "other");
}

TEST_F(StagedFilesTest, WhatCanBeSeenToFailFails)
{
    Put("file", "old");
    Put("folder/inner", "");
    ASSERT_EQ(mkfifo(folder_.Path("pipe").c_str(), 0600), 0);
    Link("loop", "loop");
    for (const char* name : {"missing/file", "file/below", "folder", "pipe", "loop", "missing/"})
        EXPECT_FALSE(Replace(name, "new")) << name;
    for (const char* name : {"missing", "missing/file", "file/below", "folder", "missing/"})
        EXPECT_FALSE(Remove(name)) << name;
    EXPECT_FALSE(ReplaceFile("", "new"));
    EXPECT_FALSE(RemoveFile(""));
    EXPECT_THAT(StagedFiles(), IsEmpty());
}

TEST_F(StagedFilesTest, AFileWhoseChangesAreForbiddenIsNeitherSavedNorRemovedUnderAnyName)
{
    Put("deep/file", "old");
    Put("other", "old");
    Link("link", "deep/file");
    Link("folder", "deep");
    ForbidChanges(folder_.Path("folder/file"));
    for (const char* name : {"deep/file", "link", "folder/file", "deep/../folder/file"})
        EXPECT_FALSE(Replace(name, "new")) << name;
    for (const char* name : {"deep/file", "folder/file"})
        EXPECT_FALSE(Remove(name)) << name;
    EXPECT_FALSE(Copy("deep/file", "other"));
    EXPECT_TRUE(Copy("deep/copy", "deep/file"));
    EXPECT_TRUE(Replace("other", "new"));
    EXPECT_EQ(Seen("deep/file"), "old");

    EndStaging();
    BeginStaging();
    EXPECT_TRUE(Replace("deep/file", "new")) << "in the next run";
}

TEST_F(StagedFilesTest, AFileThatWasMissingMayBeMade)
{
    EXPECT_EQ(Seen("made"), "missing");
    EXPECT_TRUE(Replace("made", "new"));
}

TEST_F(StagedFilesTest, AFileThatTheRunMadeTooLargeDoesNotLoad)
{
    EXPECT_TRUE(Replace("file", std::string(4 << 20, 'x')));
    EXPECT_EQ(Seen("file"), std::string(4 << 20, 'x'));
    EXPECT_TRUE(Replace("file", std::string((4 << 20) + 1, 'x')));
    EXPECT_EQ(Seen("file"), "too large");
}

TEST_F(StagedFilesTest, AFolderThatIsEmptyCanBeRemoved)
{
    fs::create_directory(folder_.Path("folder"));
    EXPECT_TRUE(Remove("folder"));
    EXPECT_FALSE(Exists("folder"));
}

TEST_F(StagedFilesTest, AFolderWithoutPermissionFailsAtTheSave)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "root writes to every folder";
    Put("file", "old");
    ASSERT_EQ(chmod(folder_.Path().c_str(), 0555), 0);
    EXPECT_FALSE(Replace("file", "new"));
    EXPECT_FALSE(Remove("file"));
    EXPECT_TRUE(Replace("file", "old")) << "nothing to write";
    ASSERT_EQ(chmod(folder_.Path().c_str(), 0755), 0);
}

TEST_F(StagedFilesTest, ARelativePathIsCommittedFromEveryFolder)
{
    const fs::path before = fs::current_path();
    fs::current_path(folder_.Path());
    EXPECT_TRUE(ReplaceFile("file", "new"));
    fs::current_path(before);
    ASSERT_EQ(StagedFiles().size(), 1u);
    EXPECT_EQ(StagedFiles().front().path, fs::canonical(folder_.Path()).string() + "/file");
}

TEST_F(StagedFilesTest, EveryServiceSeesTheSave)
{
    Put("file", "[A]\nkey=1\n");
    const std::string path = folder_.Path("file");
    etlSetProfileInt(path.c_str(), "A", "key", 2);
    etlSetProfileInt(path.c_str(), "A", "other", 3);
    EXPECT_EQ(etlGetProfileInt(path.c_str(), "A", "key", 0), 2);
    iniFile document;
    EXPECT_NE(document.LoadFromFile(path.c_str()), 0);
    EXPECT_EQ(document.GetTextValue("A", "other", ""), "3");
    EXPECT_EQ(Get("file"), "[A]\nkey=1\n");
}
