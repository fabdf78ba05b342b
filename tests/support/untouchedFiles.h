// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <utility>
#include <vector>

#include "phoneImage.h"

/// Files that a run must not save, not even unchanged: a save sets a new inode, or at least a new modification time.
class UntouchedFiles
{
public:
    /// Sets an old modification time on the files and records their state.
    UntouchedFiles(const PhoneImage& phone, const std::vector<std::string>& paths)
    {
        for (const std::string& path : paths) {
            const std::string hostPath = phone.HostPath(path);
            const timespec times[2] = {{1000000000, 0}, {1000000000, 0}};
            EXPECT_EQ(utimensat(AT_FDCWD, hostPath.c_str(), times, 0), 0) << path;
            files_.push_back({hostPath, Describe(hostPath)});
        }
    }

    void Check() const
    {
        for (const auto& [hostPath, description] : files_)
            EXPECT_EQ(Describe(hostPath), description) << hostPath << " has been touched";
    }

private:
    static std::string Describe(const std::string& hostPath)
    {
        struct stat status = {};
        if (stat(hostPath.c_str(), &status) != 0)
            return "missing";
        std::ostringstream text;
        text << "inode " << status.st_ino << " mode " << std::oct << status.st_mode << std::dec << " modified "
             << status.st_mtim.tv_sec << '.' << status.st_mtim.tv_nsec << " changed " << status.st_ctim.tv_sec << '.'
             << status.st_ctim.tv_nsec << '\n'
             << ReadBytes(hostPath);
        return text.str();
    }

    std::vector<std::pair<std::string, std::string>> files_; // path on this machine, description
};
