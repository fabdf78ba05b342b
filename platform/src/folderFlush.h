// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <list>
#include <string>

/// Collects folders, and flushes each once on destruction.
class FolderFlush
{
public:
    FolderFlush() = default;
    ~FolderFlush();
    FolderFlush(const FolderFlush&) = delete;
    FolderFlush& operator=(const FolderFlush&) = delete;

    /// Adds the folder that contains the path's last name.
    void Add(const std::string& path);

private:
    std::list<std::string> folders_;
};
