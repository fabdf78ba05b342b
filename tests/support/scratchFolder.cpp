// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "scratchFolder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace fs = std::filesystem;

ScratchFolder::ScratchFolder()
{
    std::string pattern = (fs::temp_directory_path() / "kestrune-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("no scratch folder " + pattern);
    path_ = pattern;
}

ScratchFolder::~ScratchFolder()
{
    std::error_code ignored;
    // Folders to which a test denied access are made accessible, or their entries could not be removed.
    for (fs::recursive_directory_iterator entry(path_, fs::directory_options::skip_permission_denied, ignored), end;
         !ignored && entry != end; entry.increment(ignored)) {
        std::error_code unchanged;
        if (entry->is_directory(unchanged) && !entry->is_symlink(unchanged))
            fs::permissions(entry->path(), fs::perms::owner_all, fs::perm_options::add, unchanged);
    }
    fs::remove_all(path_, ignored);
}

std::string ReadBytes(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << "cannot read " << path;
    std::ostringstream bytes; // block by block, unlike an iterator
    bytes << file.rdbuf();
    return bytes.str();
}

void WriteBytes(const std::string& path, const std::string& bytes)
{
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << bytes;
    file.close();
    EXPECT_TRUE(file.good()) << "cannot write " << path;
}
