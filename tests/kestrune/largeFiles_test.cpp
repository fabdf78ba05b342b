// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Files of more than 4 MiB: a run handles and reports them in the same way as files that do not load.

#include <filesystem>
#include <gtest/gtest.h>
#include <map>

#include "phoneImage.h"

namespace fs = std::filesystem;

namespace
{

using Lines = std::vector<std::string>;

struct Row {
    const char* path;
    std::vector<std::string> modes;
};

/// Every file that a run reads whole, in the modes that read it.
const Row kRows[] = {
    {"/config/user/user.ini", {"all", "1", "2", "pwd"}},
    {"/config/system/system.ini", {"all", "1", "2"}},
    {"/config/version.ini", {"all", "1"}},
    {"/config/user/voip/sipAccount0.cfg", {"all", "1", "2"}},
    {"/config/user/voip/sipAccount16.cfg", {"1"}}, // mode "2" replaces it unread
    {"/config/user/voip/directip.cfg", {"2"}},     // mode "1" replaces it unread
    {"/phone/factory/user/user.ini", {"1", "pwd"}},
    {"/phone/factory/user/voip/sipAccount16.cfg", {"2"}},
    {"/phone/factory/certs/pwcipher.key", {"all", "pwd"}},
    {"/phone/resource/kestrune.xml", {"all"}},
    {"/phone/resource/encryptconfig.xml", {"pwd"}},
    {"/tmp/VersionInfo.cfg", {"1", "2"}},
    {"/config/data/contactData.xml", {"dev"}},
    {"/config/data/dialplan.xml", {"dev"}},
    {"/config/data/dialnow.xml", {"dev"}},
    {"/config/data/dsskey.xml", {"dev"}},
    {"/config/data/doorphonedata.xml", {"dev"}},
    {"/config/data/remotebook.xml", {"dev"}},
    {"/config/data/linekey.xml", {"2"}},
    {"/config/data/programkey.xml", {"2"}},
    {"/config/data/expkey0.xml", {"2"}},
};

/// The XML library's message for a folder in place of the file.
Lines WithoutDescription(Lines reports)
{
    for (std::string& report : reports) {
        for (const std::string description : {"Failed to open file", "Document too large."}) {
            const std::size_t position = report.find("[" + description + "]");
            if (position != std::string::npos)
                report.replace(position + 1, description.size(), "...");
        }
    }
    return reports;
}

/// The files of a phone and their content, except for that one.
std::map<std::string, std::string> FilesBeside(const PhoneImage& phone, const std::string& path)
{
    std::map<std::string, std::string> files;
    for (const char* tree : {"/config", "/tmp"}) {
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(phone.HostPath(tree))) {
            const std::string name = entry.path().string().substr(phone.HostPath("").size());
            if (entry.is_regular_file() && name != path)
                files[name] = phone.Get(name);
        }
    }
    return files;
}

/// Prints only the names of the files that differ, because they are large.
void ExpectSameFiles(const PhoneImage& phone, const PhoneImage& likeWise, const std::string& besides)
{
    const auto found = FilesBeside(phone, besides);
    const auto expected = FilesBeside(likeWise, besides);
    for (const auto& [path, bytes] : expected)
        EXPECT_TRUE(found.count(path) == 1 && found.at(path) == bytes) << path << " differs";
    EXPECT_EQ(found.size(), expected.size());
}

/// The file is unchanged, or was removed as any other file of its name would be.
void ExpectSize(const PhoneImage& phone, const std::string& path, std::uintmax_t size, const PhoneImage& likeWise)
{
    EXPECT_EQ(phone.Has(path), likeWise.Has(path));
    if (phone.Has(path)) {
        EXPECT_EQ(fs::file_size(phone.HostPath(path)), size);
    }
}

constexpr const char* kLimitSeconds = "30";

} // namespace

TEST(LargeFiles, AFileOfMoreThan4MebibytesIsAsOneThatDoesNotLoad)
{
    constexpr std::uintmax_t kSize = (std::uintmax_t{4} << 20) + 1;
    for (const Row& row : kRows) {
        for (const std::string& mode : row.modes) {
            SCOPED_TRACE(row.path + (", mode " + mode));
            PhoneImage folder;
            folder.PutExamplePhone();
            folder.Remove(row.path);
            folder.PutFolder(row.path);
            folder.Run(mode);

            // A comment, so that the file would load if it were read.
            PhoneImage phone;
            phone.PutExamplePhone();
            const bool isXml = std::string(row.path).find(".xml") != std::string::npos;
            const std::string text = phone.Has(row.path) ? phone.Get(row.path) : "[Features]\nBLfNotifyType=1\n";
            const std::string filling(kSize - text.size() - 7, isXml ? ' ' : '\n');
            phone.Put(row.path, isXml ? text + "<!--" + filling + "-->" : text + "\n;" + filling + "12345");
            phone.Run(mode);
            ExpectSize(phone, row.path, kSize, folder);
            EXPECT_EQ(WithoutDescription(phone.Reports()), WithoutDescription(folder.Reports()));
            EXPECT_EQ(phone.Output(), folder.Output());
            ExpectSameFiles(phone, folder, row.path);
        }
    }
}

TEST(LargeFiles, AFileOfATebibyteDoesNotKeepTheOthersFromBeingMigrated)
{
    for (const Row& row : kRows) {
        const std::string path = row.path;
        const std::string mode = row.modes.back();
        SCOPED_TRACE(path + ", mode " + mode);
        PhoneImage folder;
        folder.PutExamplePhone();
        folder.Remove(path);
        folder.PutFolder(path);
        folder.Run(mode);

        PhoneImage phone;
        phone.PutExamplePhone();
        if (!phone.Has(path))
            phone.Put(path, "");
        std::error_code error;
        fs::resize_file(phone.HostPath(path), std::uintmax_t{1} << 40, error);
        if (error)
            GTEST_SKIP() << "no file system for such a file";
        std::vector<std::string> command = phone.Command({mode});
        command.insert(command.begin(), {"timeout", "-s", "KILL", kLimitSeconds});
        EXPECT_EQ(RunProcess(command, phone.Environment()).exitStatus, 0) << "137: it has not ended";
        ExpectSameFiles(phone, folder, path);
        ExpectSize(phone, path, std::uintmax_t{1} << 40, folder);
    }
}
