// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "upgradeMarker.h"

#include <cerrno>
#include <sys/stat.h>

#include "fileBytes.h"
#include "runCommit.h"

bool IsMarkerThere()
{
    struct stat status = {};
    return lstat(kUpgradeMarker, &status) == 0 || (errno != ENOENT && errno != ENOTDIR);
}

UpgradeMarker ReadMarker()
{
    struct stat status = {};
    std::string text;
    if (lstat(kUpgradeMarker, &status) != 0 || !S_ISREG(status.st_mode))
        return {};
    if (ReadFile(kUpgradeMarker, text) != ReadResult::Done)
        return {};
    return ParseMarker(text);
}

UpgradeMarker ParseMarker(std::string_view text)
{
    const std::size_t begin = text.find_first_not_of('\n');
    if (begin == std::string_view::npos)
        return {"", "", /*isEmpty=*/true};
    const std::size_t end = text.find('\n', begin);
    if (end == std::string_view::npos)
        return {std::string(text.substr(begin)), "", /*isEmpty=*/false};
    const std::size_t next = text.find_first_not_of('\n', end);
    return {std::string(text.substr(begin, end - begin)),
            next == std::string_view::npos ? "" : std::string(text.substr(next)), /*isEmpty=*/false};
}
