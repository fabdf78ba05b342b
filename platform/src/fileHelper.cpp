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
    struct stat status = {};
    if (lstat(path, &status) != 0)
        return 0;
    if (!S_ISLNK(status.st_mode))
        return 1;

    std::string target = path;
    return ResolveLinks(target) == LinkResult::Resolved && lstat(target.c_str(), &status) == 0;
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
