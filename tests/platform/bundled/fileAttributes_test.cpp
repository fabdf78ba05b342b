// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The readers of a file that replaced another one, or was made from it: no more users than before, even if an access
// list or an owner cannot be kept.

#include "fileAttributes.h"

#include <cerrno>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>

#include "accessList.h"
#include "copyFile.h"
#include "replacementFixture.h"

using namespace std::string_literals;

namespace
{

std::string failingAttribute; // the extended attribute that cannot be set
int ownerError = 0;           // the error of a change of owner

} // namespace

extern "C" int fsetxattr(int file, const char* name, const void* value, size_t size, int flags) noexcept
{
    if (failingAttribute == name) {
        errno = ENOSPC;
        return -1;
    }
    return static_cast<int>(syscall(SYS_fsetxattr, file, name, value, size, flags));
}

extern "C" int fchown(int file, uid_t owner, gid_t group) noexcept
{
    if (ownerError == 0)
        return fchownat(file, "", owner, group, AT_EMPTY_PATH);
    errno = ownerError;
    return -1;
}

namespace
{

constexpr uid_t kOwner = 1234;
constexpr gid_t kGroup = 4321;

class FileAttributes : public ReplacementFixture
{
protected:
    ~FileAttributes() override
    {
        failingAttribute.clear();
        ownerError = 0;
    }

    void PutWithMode(const std::string& name, mode_t mode) const
    {
        Put(name, "bytes of " + name);
        ASSERT_EQ(chmod(folder_.Path(name).c_str(), mode), 0);
    }

    /// @return whether the owner can be changed
    bool PutOf(const std::string& name, uid_t owner, gid_t group, mode_t mode) const
    {
        Put(name, "bytes of " + name);
        return chown(folder_.Path(name).c_str(), owner, group) == 0 && chmod(folder_.Path(name).c_str(), mode) == 0;
    }

    /// @return whether this file system supports access lists
    bool PutWithList(const std::string& name, const std::string& list) const
    {
        Put(name, "bytes of " + name);
        return SetAttribute(folder_.Path(name), kAccessList, list);
    }

    std::optional<std::string> ListOf(const std::string& name) const
    {
        return AttributeOf(folder_.Path(name), kAccessList);
    }

    bool Derive(const std::string& name, const std::string& source) const
    {
        return ReplaceDerivedFile(folder_.Path(name).c_str(), "made of " + source, folder_.Path(source).c_str());
    }

    bool Copy(const std::string& name, const std::string& source) const
    {
        return CopyFile(folder_.Path(name).c_str(), folder_.Path(source).c_str());
    }

    void ExpectOwner(const std::string& name, uid_t owner, gid_t group) const
    {
        EXPECT_EQ(StatusOf(name).st_uid, owner) << name;
        EXPECT_EQ(StatusOf(name).st_gid, group) << name;
    }
};

} // namespace

TEST_F(FileAttributes, AReplacedFileKeepsItsAccessList)
{
    if (!PutWithList("file", ListForUser2222()))
        GTEST_SKIP() << "no access lists here";
    EXPECT_TRUE(Replace("file", "new"));
    EXPECT_EQ(Get("file"), "new");
    EXPECT_EQ(ListOf("file"), ListForUser2222()) << "without it the mask would be the group's bits";
    EXPECT_EQ(ModeOf("file"), 0640u);
}

TEST_F(FileAttributes, AReplacedFileKeepsItsExtendedAttributes)
{
    Put("file", "old");
    const std::string path = folder_.Path("file");
    const std::pair<const char*, std::string> rows[] = {
        {"user.empty", ""}, {"user.label", "a\0b\xFF"s}, {"trusted.label", "t"}, {"security.label", "s"}};
    std::vector<const char*> set;
    for (const auto& [name, value] : rows) {
        if (SetAttribute(path, name, value))
            set.push_back(name);
    }
    if (set.empty())
        GTEST_SKIP() << "no extended attributes here";
    EXPECT_TRUE(Replace("file", "new"));
    for (const auto& [name, value] : rows) {
        if (std::find(set.begin(), set.end(), name) != set.end()) {
            EXPECT_EQ(AttributeOf(path, name), value) << name;
        }
    }
}

TEST_F(FileAttributes, AnAccessListThatCannotBeKeptLeavesTheFileToItsOwner)
{
    if (!PutWithList("file", ListForUser2222()))
        GTEST_SKIP() << "no access lists here";
    failingAttribute = kAccessList;
    EXPECT_TRUE(Replace("file", "new"));
    EXPECT_TRUE(Copy("copy", "file"));
    for (const char* name : {"file", "copy"}) {
        EXPECT_EQ(ModeOf(name), 0600u) << name;
        EXPECT_EQ(ListOf(name), std::nullopt) << name;
    }
}

TEST_F(FileAttributes, AnotherAttributeThatCannotBeKeptIsLeftOut)
{
    PutWithMode("file", 0640);
    if (!SetAttribute(folder_.Path("file"), "user.a", "1") || !SetAttribute(folder_.Path("file"), "user.b", "2"))
        GTEST_SKIP() << "no extended attributes here";
    failingAttribute = "user.a";
    EXPECT_TRUE(Replace("file", "new"));
    EXPECT_EQ(AttributeOf(folder_.Path("file"), "user.a"), std::nullopt);
    EXPECT_EQ(AttributeOf(folder_.Path("file"), "user.b"), "2");
    EXPECT_EQ(ModeOf("file"), 0640u);
}

TEST_F(FileAttributes, TheAccessListThatAFolderGivesNewFilesReachesNoFileThatHadNone)
{
    PutWithMode("file", 0640);
    PutWithMode("source", 0664);
    if (!SetAttribute(folder_.Path(), kDefaultAccessList, ListForUser2222()))
        GTEST_SKIP() << "no access lists here";
    EXPECT_TRUE(Replace("file", "new"));
    EXPECT_TRUE(Copy("copy", "source"));
    EXPECT_TRUE(Derive("made", "source"));
    for (const char* name : {"file", "copy", "made"})
        EXPECT_EQ(ListOf(name), std::nullopt) << name;
    EXPECT_EQ(ModeOf("file"), 0640u);
    EXPECT_EQ(ModeOf("copy"), 0664u);
    EXPECT_EQ(ModeOf("made"), 0644u);
}

TEST_F(FileAttributes, AnOwnerThatWeMayNotGiveLeavesGroupAndOthersWhatBothHad)
{
    const mode_t rows[][2] = {
        {0640, 0600}, {0600, 0600}, {0644, 0644}, {0604, 0600}, {0664, 0644},
        {0646, 0644}, {0666, 0666}, {0660, 0600}, {0444, 0444}, {0755, 0755},
    };
    for (const auto& [mode, expected] : rows) {
        if (!PutOf("file", kOwner, kGroup, mode))
            GTEST_SKIP() << "only root can give a file to another user";
        ownerError = EPERM;
        EXPECT_TRUE(Replace("file", "new"));
        ExpectOwner("file", geteuid(), getegid());
        EXPECT_EQ(ModeOf("file"), expected) << std::oct << mode;
        ownerError = 0;
    }
}

TEST_F(FileAttributes, AnOwnerThatCannotBeGivenForAnotherReasonIsAFailedSave)
{
    if (!PutOf("file", kOwner, kGroup, 0640))
        GTEST_SKIP() << "only root can give a file to another user";
    for (const int error : {EIO, ENOSPC, EINVAL}) {
        ownerError = error;
        EXPECT_FALSE(Replace("file", "new"));
        EXPECT_EQ(Get("file"), "bytes of file") << error;
        EXPECT_THAT(Names(), testing::ElementsAre("file")) << error;
    }
}

TEST_F(FileAttributes, AnAccessListOfAnOwnerWhomWeMayNotNameLetsNobodyElseRead)
{
    // The group had no access although others did; its members count as others after the group has changed.
    const std::string list =
        AccessListOf({{ACL_USER_OBJ, 6}, {ACL_USER, 4, 2222}, {ACL_GROUP_OBJ, 0}, {ACL_MASK, 4}, {ACL_OTHER, 4}});
    if (!PutWithList("file", list) || chown(folder_.Path("file").c_str(), kOwner, kGroup) != 0)
        GTEST_SKIP() << "no access lists here, or not root";
    ownerError = EPERM;
    EXPECT_TRUE(Replace("file", "new"));
    EXPECT_EQ(ModeOf("file") & 0007u, 0u);
}

TEST_F(FileAttributes, ANewCopyIsAsItsSource)
{
    for (const mode_t mode : {0600u, 0640u, 0604u, 0666u, 0400u}) {
        if (!PutOf("source", kOwner, kGroup, mode))
            GTEST_SKIP() << "only root can give a file to another user";
        std::filesystem::remove(folder_.Path("copy"));
        EXPECT_TRUE(Copy("copy", "source"));
        ExpectOwner("copy", kOwner, kGroup);
        EXPECT_EQ(ModeOf("copy"), mode);
        EXPECT_EQ(Get("copy"), Get("source"));
    }
}

TEST_F(FileAttributes, ANewCopyHasItsSourcesAccessListAndAttributes)
{
    if (!PutWithList("source", ListForUser2222()) || !SetAttribute(folder_.Path("source"), "user.label", "x"))
        GTEST_SKIP() << "no extended attributes here";
    EXPECT_TRUE(Copy("copy", "source"));
    EXPECT_EQ(ListOf("copy"), ListForUser2222());
    EXPECT_EQ(AttributeOf(folder_.Path("copy"), "user.label"), "x");
}

TEST_F(FileAttributes, ACopyOntoAFileTakesFromItsBitsWhatTheSourceWithholds)
{
    struct Row {
        mode_t destination;
        mode_t source;
        mode_t expected;
    };
    const Row rows[] = {
        {0644, 0600, 0600}, {0600, 0644, 0600}, {0664, 0640, 0640}, {0604, 0640, 0600},
        {0666, 0666, 0666}, {0640, 0440, 0440}, {0755, 0644, 0644},
    };
    for (const Row& row : rows) {
        if (!PutOf("copy", 77, 88, row.destination) || !PutOf("source", kOwner, kGroup, row.source))
            GTEST_SKIP() << "only root can give a file to another user";
        EXPECT_TRUE(Copy("copy", "source"));
        ExpectOwner("copy", 77, 88);
        EXPECT_EQ(ModeOf("copy"), row.expected) << std::oct << row.destination << ' ' << row.source;
        EXPECT_EQ(Get("copy"), "bytes of source");
    }
}

TEST_F(FileAttributes, WhoIsNamedByTheSourcesAccessListIsNoGroupOfTheCopy)
{
    PutWithMode("copy", 0664);
    if (!PutWithList("source", ListForUser2222()))
        GTEST_SKIP() << "no access lists here";
    EXPECT_TRUE(Copy("copy", "source"));
    EXPECT_EQ(ModeOf("copy"), 0600u) << "the source's group bits are its list's mask";
}

TEST_F(FileAttributes, ACopyOntoAFileWithAnAccessListWithholdsFromItWhatTheSourceWithholds)
{
    PutWithMode("source", 0600);
    if (!PutWithList("copy", ListForUser2222()))
        GTEST_SKIP() << "no access lists here";
    EXPECT_TRUE(Copy("copy", "source"));
    EXPECT_EQ(ModeOf("copy"), 0600u) << "the mask: user 2222 reads nothing";
}

TEST_F(FileAttributes, WhatIsMadeOfAnotherFileGetsItsOwnerAndNoReaderBeyondIts)
{
    struct Row {
        mode_t source;
        mode_t mask;
        mode_t expected;
    };
    const Row rows[] = {
        {0600, 022, 0600}, {0640, 022, 0640}, {0644, 022, 0644}, {0400, 022, 0600}, {0604, 022, 0604},
        {0666, 022, 0644}, {0755, 022, 0644}, {0644, 077, 0600}, {0644, 0, 0644},
    };
    for (const Row& row : rows) {
        if (!PutOf("source", kOwner, kGroup, row.source))
            GTEST_SKIP() << "only root can give a file to another user";
        std::filesystem::remove(folder_.Path("made"));
        (void)umask(row.mask);
        EXPECT_TRUE(Derive("made", "source"));
        (void)umask(022);
        ExpectOwner("made", kOwner, kGroup);
        EXPECT_EQ(ModeOf("made"), row.expected) << std::oct << row.source << ' ' << row.mask;
    }
}

TEST_F(FileAttributes, WhatIsMadeOfAFileWithAnAccessListIsItsOwners)
{
    if (!PutWithList("source", ListForUser2222()))
        GTEST_SKIP() << "no access lists here";
    EXPECT_TRUE(Derive("made", "source"));
    EXPECT_EQ(ModeOf("made"), 0600u);
    EXPECT_EQ(ListOf("made"), std::nullopt);
}

TEST_F(FileAttributes, WhatIsMadeOfAnotherFileKeepsTheAttributesOfTheFileThatItReplaces)
{
    if (!PutOf("source", kOwner, kGroup, 0600) || !PutOf("made", 77, 88, 0644))
        GTEST_SKIP() << "only root can give a file to another user";
    EXPECT_TRUE(Derive("made", "source"));
    ExpectOwner("made", 77, 88);
    EXPECT_EQ(ModeOf("made"), 0644u);
}

TEST_F(FileAttributes, WhatIsMadeOfAMissingFileIsANewFile)
{
    EXPECT_TRUE(Derive("made", "missing"));
    ExpectOwner("made", geteuid(), getegid());
    EXPECT_EQ(ModeOf("made"), 0644u);
}
