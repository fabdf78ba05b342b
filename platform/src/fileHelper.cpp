// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fileHelper.h"

#include <string>
#include <sys/stat.h>

#include "fileBytes.h"
#include "fileReplacement.h"

namespace ETL_MiscHelper
{

int pathFileExist(const char* path)
{
    if (path == nullptr || *path == '\0')
        return 0;
    std::string target = path;
    struct stat status = {};
    return ResolveLinks(target, status) == LinkResult::Resolved;
}

} // namespace ETL_MiscHelper

namespace ETL_SubClass
{

int etlCopyFile(const char* destinationPath, const char* sourcePath)
{
    if (destinationPath == nullptr || sourcePath == nullptr)
        return 0;
    constexpr mode_t kPermissionBits = 07777;
    std::string bytes;
    struct stat status = {};
    if (ReadFile(sourcePath, bytes, &status) != ReadResult::Done)
        return 0;
    return ReplaceFile(destinationPath, bytes, status.st_mode & kPermissionBits);
}

} // namespace ETL_SubClass
