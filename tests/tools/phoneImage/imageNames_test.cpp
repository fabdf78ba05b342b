// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "phoneImage/imageNames.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "phoneImage/imageCopy.h"
#include "phoneImage/toolError.h"
#include "scratchFolder.h"

namespace fs = std::filesystem;
using testing::ElementsAre;

namespace
{

/// Works in a new folder, because names are relative to the working directory.
class ImageNames : public testing::Test
{
protected:
    ImageNames() { fs::current_path(folder_.Path()); }
    ~ImageNames() override { fs::current_path(before_); }

private:
    fs::path before_ = fs::current_path();
    ScratchFolder folder_;
};

} // namespace

TEST_F(ImageNames, AFolderWithATreeOfAPhoneIsAnImage)
{
    for (const std::string tree : {"config", "phone", "tmp"}) {
        fs::create_directories("of " + tree + "/" + tree + "/x.tar");
        fs::create_directories("of " + tree + "/other");
        EXPECT_THAT(FindImages({"of " + tree}), ElementsAre("of " + tree));
    }
}

TEST_F(ImageNames, AFolderWhoseOnlyFolderHasTheTreesIsAnImageAndCanBeOpened)
{
    fs::create_directories("unpacked/desk/config");
    fs::create_directories("odd/phone/config");
    EXPECT_THAT(FindImages({"unpacked", "odd"}), ElementsAre("unpacked", "odd"));
    EXPECT_EQ(OpenImage("unpacked", "scratch"), "unpacked/desk");
    EXPECT_EQ(OpenImage("odd", "scratch"), "odd/phone");
}

TEST_F(ImageNames, AnotherFolderIsSearchedAtAllDepthsInTheOrderOfBytes)
{
    for (const char* archive : {"backups/b/3/e.tgz", "backups/b.tar", "backups/B.tar.gz", "backups/\xC3\xA4.tar"})
        WriteBytes(archive, "");
    for (const char* other :
         {"backups/readme.txt", "backups/a.zip", "backups/a.gz", "backups/a.tar.bak", "backups/TAR"})
        WriteBytes(other, "");
    fs::create_directories("backups/a/config/in it.tar"); // not searched: it is a phone
    fs::create_directories("backups/b/2/tmp");
    fs::create_directories("backups/folder.tar/empty");
    EXPECT_THAT(FindImages({"backups"}), ElementsAre("backups/B.tar.gz", "backups/a", "backups/b.tar", "backups/b/2",
                                                     "backups/b/3/e.tgz", "backups/\xC3\xA4.tar"));
}

TEST_F(ImageNames, NamesAreKeptAsGiven)
{
    WriteBytes("backups/a.tar", "");
    fs::create_directories("phone/config");
    EXPECT_THAT(FindImages({"./backups", "backups/", "phone/", "./phone"}),
                ElementsAre("./backups/a.tar", "backups/a.tar", "phone/", "./phone"));
}

TEST_F(ImageNames, LinksInASearchedFolderAreNotFollowed)
{
    WriteBytes("outside/a.tar", "");
    WriteBytes("backups/b.tar", "");
    fs::create_directory_symlink("../outside", "backups/folder");
    fs::create_directory_symlink(".", "backups/circle");
    fs::create_symlink("b.tar", "backups/link.tar");
    fs::create_directory_symlink("backups", "named");
    EXPECT_THAT(FindImages({"backups"}), ElementsAre("backups/b.tar"));
    EXPECT_THAT(FindImages({"named"}), ElementsAre("named/b.tar")); // the link itself was asked for
}

TEST_F(ImageNames, AListHasANamePerLine)
{
    fs::create_directories("backups/desk 1/config");
    WriteBytes("./list", "# old phones\n\nz.tar\nbackups\n@list\n #no comment");
    EXPECT_THAT(FindImages({"a.bin", "@list"}), ElementsAre("a.bin", "z.tar", "backups", "@list", " #no comment"));
}

TEST_F(ImageNames, AListIsReadFromStandardInput)
{
    WriteBytes("./list", "b.tar\na.tar\n");
    const int before = dup(STDIN_FILENO);
    ASSERT_NE(std::freopen("list", "r", stdin), nullptr);
    EXPECT_THAT(FindImages({"@-"}), ElementsAre("b.tar", "a.tar"));
    ASSERT_EQ(dup2(before, STDIN_FILENO), STDIN_FILENO);
    (void)close(before); // only read
}

TEST_F(ImageNames, AnImageThatIsNamedTwiceCountsOnce)
{
    WriteBytes("backups/a.tar", "");
    WriteBytes("backups/b.tar", "");
    WriteBytes("./list", "backups/a.tar\nbackups\n");
    EXPECT_THAT(FindImages({"backups/b.tar", "backups", "backups", "@list", "@list"}),
                ElementsAre("backups/b.tar", "backups/a.tar"));
}

TEST_F(ImageNames, WithoutAnyImageAFolderOrAListIsAnError)
{
    WriteBytes("empty/sub/readme.txt", "");
    WriteBytes("./comments", "# none\n\n");
    WriteBytes("./folders", "empty\n");
    for (const char* word : {"empty", "@comments", "@folders", "@none", "@empty", "@"})
        EXPECT_THROW(FindImages({"a.tar", word}), ToolError) << word;
}

TEST_F(ImageNames, AFolderThatCannotBeReadCountsAsAnImage)
{
    WriteBytes("backups/a.tar", "");
    fs::create_directories("backups/locked");
    fs::permissions("backups/locked", fs::perms::none);
    for (const char* open : {".", "backups"})
        fs::permissions(open, fs::perms::all); // for any user
    constexpr uid_t kNobody = 65534;           // root can read every folder
    const uid_t before = geteuid();
    ASSERT_TRUE(before != 0 || seteuid(kNobody) == 0);
    EXPECT_THAT(FindImages({"backups"}), ElementsAre("backups/a.tar", "backups/locked"));
    ASSERT_EQ(seteuid(before), 0);
}
