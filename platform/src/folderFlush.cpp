// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "folderFlush.h"

#include <algorithm>

#include "descriptor.h"

FolderFlush::~FolderFlush()
{
    for (const std::string& folder : folders_)
        FlushFolder(folder.c_str());
}

void FolderFlush::Add(const std::string& path)
{
    std::string folder = FolderOf(path);
    if (std::find(folders_.begin(), folders_.end(), folder) == folders_.end())
        folders_.push_back(std::move(folder));
}
