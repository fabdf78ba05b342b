// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The image of a configuration file after a load or a save that failed: nothing replaces a file that could not be read.

#include "iniFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "iniFileFixture.h"

namespace
{

class BundledIniFile : public IniFileFixture
{
};

} // namespace

TEST_F(BundledIniFile, ASaveWithoutAnyPathFails)
{
    EXPECT_NE(file_.SetTextValue("S", "k", "v"), 0);
    EXPECT_EQ(file_.SaveToFile(/*path=*/nullptr), 0);
    EXPECT_EQ(file_.SaveToFile(""), 0);
    EXPECT_EQ(file_.SaveToFile(folder_.Path("missing/user.ini").c_str()), 0);
    EXPECT_EQ(file_.SaveToFile(folder_.Path().c_str()), 0);
    EXPECT_EQ(rmdir(folder_.Path().c_str()), 0) << "the folder is not empty";
}

TEST_F(BundledIniFile, AfterAMissingFileTheDocumentIsEmptyAndASaveMakesTheFile)
{
    for (const std::string& missing : {folder_.Path("missing.ini"), folder_.Path("user.ini/x"), folder_.Path("no/x")}) {
        Load("[S]\nk=1\n");
        EXPECT_EQ(file_.LoadFromFile(missing.c_str()), 0) << missing;
        ExpectEmpty();
        EXPECT_NE(access(missing.c_str(), F_OK), 0) << missing;
    }
    EXPECT_NE(file_.SetTextValue("S", "k", "2"), 0);
    EXPECT_NE(file_.SaveToFile(folder_.Path("missing.ini").c_str()), 0);
    EXPECT_EQ(ReadBytes(folder_.Path("missing.ini")), "[S]\nk=2\n");
}

TEST_F(BundledIniFile, ANullOrEmptyPathDoesNotLoad)
{
    for (const char* path : {static_cast<const char*>(nullptr), ""}) {
        Load("[S]\nk=1\n");
        EXPECT_EQ(file_.LoadFromFile(path), 0);
        ExpectEmpty();
    }
}

TEST_F(BundledIniFile, AfterAFileThatCannotBeReadNothingIsSavedBeforeTheNextLoad)
{
    const std::string pipe = folder_.Path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string loop = folder_.Path("loop");
    ASSERT_EQ(symlink("loop", loop.c_str()), 0);
    for (const std::string& unreadable : {folder_.Path(), pipe, loop}) {
        SCOPED_TRACE(unreadable);
        Load("[S]\nk=1\n");
        EXPECT_EQ(file_.LoadFromFile(unreadable.c_str()), 0); // and returns at once, although the pipe has no writer
        ExpectEmpty();
        EXPECT_NE(file_.SetTextValue("S", "k", "2"), 0);
        EXPECT_EQ(file_.SaveToFile(/*path=*/nullptr), 0);
        EXPECT_EQ(file_.SaveToFile(path_.c_str()), 0);
        EXPECT_EQ(ReadBytes(path_), "[S]\nk=1\n");

        ASSERT_NE(file_.LoadFromFile(path_.c_str()), 0);
        EXPECT_EQ(Saved(), "[S]\nk=1\n");
    }
}

TEST_F(BundledIniFile, AFileWithoutReadPermissionIsLeftAlone)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "root reads every file";
    Load("[S]\nk=1\n");
    ASSERT_EQ(chmod(path_.c_str(), 0), 0);
    EXPECT_EQ(file_.LoadFromFile(path_.c_str()), 0);
    ExpectEmpty();
    EXPECT_NE(file_.SetTextValue("S", "k", "2"), 0);
    EXPECT_EQ(file_.SaveToFile(path_.c_str()), 0);
    ASSERT_EQ(chmod(path_.c_str(), 0600), 0);
    EXPECT_EQ(ReadBytes(path_), "[S]\nk=1\n");
}
