// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <sys/stat.h>

#include "profile.h"
#include "scratchFolder.h"

/// One of the two pairs of operations.
struct Pair {
    const char* name;
    int (*get)(const char* path, const char* section, const char* key, int defaultValue);
    void (*set)(const char* path, const char* section, const char* key, int value);
};

/// For the list of tests.
inline void PrintTo(const Pair& pair, std::ostream* stream)
{
    *stream << pair.name;
}

/// A file in a separate folder, and the operations of the pair under test on it.
class ProfileFixture : public testing::TestWithParam<Pair>
{
protected:
    int Get(const char* section, const char* key, int defaultValue) const
    {
        return GetParam().get(path_.c_str(), section, key, defaultValue);
    }

    void Set(const char* section, const char* key, int value) const
    {
        GetParam().set(path_.c_str(), section, key, value);
    }

    ScratchFolder folder_;
    std::string path_ = folder_.Path("user.ini");
};

/// @return the number of the file's inode
inline ino_t NumberOf(const std::string& path)
{
    struct stat status = {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return status.st_ino;
}

inline auto BothPairs()
{
    return testing::Values(Pair{"etlProfile", etlGetProfileInt, etlSetProfileInt},
                           Pair{"etlRegistry", etlGetRegistryInt, etlSetRegistryInt});
}
