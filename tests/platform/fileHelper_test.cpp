// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The gate before optional files, and whole-file copies, destination first.

#include "fileHelper.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "scratchFolder.h"

using namespace std::string_literals;
using ETL_MiscHelper::pathFileExist;
using ETL_SubClass::etlCopyFile;

namespace
{

class FileHelper : public testing::Test
{
protected:
    FileHelper() : mask_(umask(022)) {}
    ~FileHelper() override { (void)umask(mask_); }

    int Exists(const std::string& name) const { return pathFileExist(folder_.Path(name).c_str()); }
    int Copy() const { return etlCopyFile(destination_.c_str(), source_.c_str()); }

    void Link(const std::string& name, const std::string& target) const
    {
        ASSERT_EQ(symlink(target.c_str(), folder_.Path(name).c_str()), 0) << name;
    }

    static mode_t ModeOf(const std::string& path)
    {
        struct stat status = {};
        EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
        return status.st_mode & 07777;
    }

    ScratchFolder folder_;
    std::string source_ = folder_.Path("source");
    std::string destination_ = folder_.Path("destination");

private:
    mode_t mask_;
};

} // namespace

TEST_F(FileHelper, ExistingNamesAreThoseThatLeadToAFileOfAnyKind)
{
    WriteBytes(folder_.Path("file"), "");
    WriteBytes(folder_.Path("folder/inner"), "x");
    ASSERT_EQ(mkfifo(folder_.Path("pipe").c_str(), 0), 0);
    Link("link", "file");
    Link("chain", "link");
    Link("link to folder", "folder");
    Link("dangling", "nothing");
    Link("loop", "loop");
    for (const char* name : {"file", "folder", "folder/inner", "pipe", "link", "chain", "link to folder",
                             "link to folder/inner", "folder/../file"})
        EXPECT_NE(Exists(name), 0) << name;
    for (const char* name : {"nothing", "nothing/inner", "file/inner", "folder/nothing", "dangling", "loop"})
        EXPECT_EQ(Exists(name), 0) << name;
    EXPECT_EQ(pathFileExist(/*path=*/nullptr), 0);
    EXPECT_EQ(pathFileExist(""), 0);
}

TEST_F(FileHelper, AnotherUsersLinkInAStickyFolderDoesNotExist)
{
    WriteBytes(source_, "secret");
    Link("foreign", "source");
    Link("own", "source");
    ASSERT_EQ(chmod(folder_.Path().c_str(), 01777), 0);
    if (lchown(folder_.Path("foreign").c_str(), geteuid() + 1, getegid()) != 0)
        GTEST_SKIP() << "only root can give a link to another user";
    EXPECT_EQ(Exists("foreign"), 0);
    EXPECT_NE(Exists("own"), 0);
    EXPECT_EQ(etlCopyFile(destination_.c_str(), folder_.Path("foreign").c_str()), 0);
    EXPECT_EQ(Exists("destination"), 0);
}

TEST_F(FileHelper, ACopyHoldsEveryByteOfTheSource)
{
    for (const std::string& bytes : {""s, "[S]\r\nk=\0\xFF"s, std::string(3 << 20, 'x')}) {
        WriteBytes(source_, bytes);
        EXPECT_NE(Copy(), 0);
        EXPECT_EQ(ReadBytes(destination_), bytes);
        EXPECT_EQ(ReadBytes(source_), bytes);
    }
}

TEST_F(FileHelper, ACopyReplacesAnExistingDestinationWhole)
{
    WriteBytes(source_, "short");
    WriteBytes(destination_, "a much longer text that was there before");
    EXPECT_NE(Copy(), 0);
    EXPECT_EQ(ReadBytes(destination_), "short");
    EXPECT_EQ(Exists("destination.kestrune-new"), 0);
}

TEST_F(FileHelper, ANewCopyGetsTheSourcesPermissionBitsAndAnExistingOneLosesWhatTheSourceWithholds)
{
    WriteBytes(source_, "x");
    for (const mode_t mode : {0600u, 0666u, 0755u, 0444u}) {
        ASSERT_EQ(chmod(source_.c_str(), mode), 0);
        ASSERT_TRUE(unlink(destination_.c_str()) == 0 || errno == ENOENT);
        EXPECT_NE(Copy(), 0);
        EXPECT_EQ(ModeOf(destination_), mode) << "the umask has no part in it";
    }
    const mode_t rows[][3] = {{0640, 0644, 0640}, {0640, 0666, 0640}, {0644, 0600, 0600}, {0664, 0640, 0640}};
    for (const auto& [existing, source, expected] : rows) {
        WriteBytes(destination_ + "2", "y");
        ASSERT_EQ(chmod((destination_ + "2").c_str(), existing), 0);
        ASSERT_EQ(chmod(source_.c_str(), source), 0);
        EXPECT_NE(etlCopyFile((destination_ + "2").c_str(), source_.c_str()), 0);
        EXPECT_EQ(ModeOf(destination_ + "2"), expected) << std::oct << existing << ' ' << source;
    }
}

TEST_F(FileHelper, LinksOnBothSidesAreFollowed)
{
    WriteBytes(source_, "new");
    WriteBytes(destination_, "old");
    Link("from", "source");
    Link("to", "destination");
    EXPECT_NE(etlCopyFile(folder_.Path("to").c_str(), folder_.Path("from").c_str()), 0);
    EXPECT_EQ(ReadBytes(destination_), "new");
    struct stat status = {};
    ASSERT_EQ(lstat(folder_.Path("to").c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
}

TEST_F(FileHelper, ACopyOntoItselfChangesNothing)
{
    WriteBytes(source_, "same");
    EXPECT_NE(etlCopyFile(source_.c_str(), source_.c_str()), 0);
    EXPECT_EQ(ReadBytes(source_), "same");
}

TEST_F(FileHelper, AFailingCopyLeavesTheDestinationAsItWas)
{
    WriteBytes(destination_, "old");
    EXPECT_EQ(Copy(), 0) << "no source";
    EXPECT_EQ(etlCopyFile(destination_.c_str(), folder_.Path().c_str()), 0) << "a folder as source";
    ASSERT_EQ(mkfifo(source_.c_str(), 0600), 0);
    EXPECT_EQ(Copy(), 0) << "a pipe as source";
    EXPECT_EQ(ReadBytes(destination_), "old");

    EXPECT_EQ(etlCopyFile(folder_.Path().c_str(), destination_.c_str()), 0) << "a folder as destination";
    EXPECT_EQ(etlCopyFile(folder_.Path("missing/x").c_str(), destination_.c_str()), 0);
    EXPECT_EQ(etlCopyFile(source_.c_str(), destination_.c_str()), 0) << "a pipe as destination";
    EXPECT_EQ(Exists("missing"), 0);
    EXPECT_EQ(unlink(source_.c_str()), 0);
    EXPECT_EQ(unlink(destination_.c_str()), 0);
    EXPECT_EQ(rmdir(folder_.Path().c_str()), 0) << "a temporary file is left";
}
