// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fileHelper.h"

#include <string>
#include <sys/stat.h>

#include "copyFile.h"
#include "fileBytes.h"

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
    return CopyFile(destinationPath, sourcePath);
}

} // namespace ETL_SubClass
