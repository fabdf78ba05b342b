// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "replaceAtOnce.h"

#include <fcntl.h>
#include <unistd.h>

#include "descriptor.h"

int ReplaceAtOnce(const std::string& path, std::string_view bytes, const FileOrigin& origin)
{
    TemporaryFile file(path);
    const std::string folder = FolderOf(path); // before the rename, after which there may be no memory
    if (const int error = file.Write(bytes, origin))
        return error;
    if (const int error = file.RenameTo(path.c_str()))
        return error;
    FlushFolder(folder.c_str());
    return 0;
}

void Touch(const std::string& path)
{
    (void)utimensat(AT_FDCWD, path.c_str(), /*times=*/nullptr, AT_SYMLINK_NOFOLLOW);
    (void)unlink(TemporaryPath(path).c_str());
}
