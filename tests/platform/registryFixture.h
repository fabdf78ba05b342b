// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "registry.h"
#include "scratchFolder.h"

/// A file in a separate folder, and handles on its sections.
class RegistryFixture : public testing::Test
{
protected:
    _HREGISTRY_* Open(const char* section) { return registryOpen(path_.c_str(), section); }
    bool IsThere() const { return access(path_.c_str(), F_OK) == 0; }

    ScratchFolder folder_;
    std::string path_ = folder_.Path("VersionInfo.cfg");
};

/// All attributes that show whether a file was written.
struct FileTrace {
    ino_t number;
    timespec modified;
    std::string bytes;

    bool operator==(const FileTrace& other) const
    {
        return number == other.number && modified.tv_sec == other.modified.tv_sec &&
               modified.tv_nsec == other.modified.tv_nsec && bytes == other.bytes;
    }
};

inline FileTrace TraceOf(const std::string& path)
{
    struct stat status = {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return {status.st_ino, status.st_mtim, ReadBytes(path)};
}
