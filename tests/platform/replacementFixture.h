// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "fileReplacement.h"
#include "scratchFolder.h"

/// Files in a separate folder, and their later state; the umask is 022.
class ReplacementFixture : public testing::Test
{
protected:
    ReplacementFixture() : mask_(umask(022)) {}

    ~ReplacementFixture() override { (void)umask(mask_); }

    bool Replace(const std::string& name, const std::string& bytes) const
    {
        return ReplaceFile(folder_.Path(name).c_str(), bytes);
    }

    std::string Get(const std::string& name) const { return ReadBytes(folder_.Path(name)); }
    void Put(const std::string& name, const std::string& bytes) const { WriteBytes(folder_.Path(name), bytes); }

    void Link(const std::string& name, const std::string& target) const
    {
        ASSERT_EQ(symlink(target.c_str(), folder_.Path(name).c_str()), 0) << name;
    }

    std::string LinkTarget(const std::string& name) const
    {
        return std::filesystem::read_symlink(folder_.Path(name)).string();
    }

    struct stat StatusOf(const std::string& name) const
    {
        struct stat status = {};
        EXPECT_EQ(lstat(folder_.Path(name).c_str(), &status), 0) << name;
        return status;
    }

    mode_t ModeOf(const std::string& name) const { return StatusOf(name).st_mode & 07777; }

    /// The names in the folder, in order.
    std::vector<std::string> Names(const std::string& folder = ".") const
    {
        std::vector<std::string> names;
        for (const std::filesystem::directory_entry& entry : std::filesystem::directory_iterator(folder_.Path(folder)))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    ScratchFolder folder_;

private:
    mode_t mask_;
};
