// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "imageCopy.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <sys/stat.h>
#include <vector>

#include "archiveExtraction.h"
#include "imageLimits.h"
#include "scratch.h"
#include "toolError.h"

namespace fs = std::filesystem;

namespace
{

/// What has been copied so far, held to the limits.
struct Amount {
    std::uint64_t bytes = 0;
    std::size_t entries = 0;
};

void Count(Amount& amount, std::uint64_t bytes)
{
    amount.bytes += bytes;
    if (++amount.entries > kMostEntries)
        throw ToolError("the image has more than " + std::to_string(kMostEntries) + " files");
    if (amount.bytes > kMostImageBytes)
        throw ToolError("the image has more than " + std::to_string(kMostImageBytes) + " bytes");
}

/// We have to read and remove the copy, whatever the phone's own bits say.
void GiveBits(const fs::path& path, mode_t bits)
{
    if (chmod(path.c_str(), bits) != 0)
        throw ToolError("cannot set the bits of " + path.string() + ": " + std::strerror(errno));
}

struct stat StatusOf(const fs::path& path)
{
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0)
        throw ToolError("cannot read " + path.string() + ": " + std::strerror(errno));
    return status;
}

void CopyFolder(const fs::path& source, const fs::path& destination, Amount& amount, int depth)
{
    constexpr int kMostLevels = 100;
    if (depth > kMostLevels)
        throw ToolError("folders nested too deep: " + source.string());
    fs::create_directory(destination);
    for (const fs::directory_entry& entry : fs::directory_iterator(source)) {
        const fs::path copy = destination / entry.path().filename();
        const struct stat status = StatusOf(entry.path());
        Count(amount, 0);
        if (S_ISLNK(status.st_mode)) {
            fs::create_symlink(fs::read_symlink(entry.path()), copy);
        } else if (S_ISDIR(status.st_mode)) {
            CopyFolder(entry.path(), copy, amount, depth + 1);
        } else if (S_ISREG(status.st_mode)) {
            const std::string bytes = ReadWhole(entry.path(), kMostFileBytes);
            Count(amount, bytes.size());
            WriteWhole(copy, bytes);
            GiveBits(copy, (status.st_mode & 0777) | S_IRUSR);
        }
    }
    GiveBits(destination, (StatusOf(source).st_mode & 01777) | S_IRWXU);
}

bool IsRealFolder(const fs::path& path)
{
    return fs::is_directory(fs::symlink_status(path));
}

bool HasTrees(const fs::path& folder)
{
    return std::any_of(std::begin(kPhoneTrees), std::end(kPhoneTrees),
                       [&folder](const char* tree) { return IsRealFolder(folder / tree); });
}

} // namespace

std::optional<fs::path> FindTrees(const fs::path& folder)
{
    std::vector<fs::path> entries;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        entries.push_back(entry.path());
    // A "phone" may be the tree of that name or a folder that holds a whole phone: only the latter has a "config".
    if (entries.size() == 1 && IsRealFolder(entries.front()) &&
        (IsRealFolder(entries.front() / "config") || (!HasTrees(folder) && HasTrees(entries.front()))))
        return entries.front();
    return HasTrees(folder) ? std::optional(folder) : std::nullopt;
}

void CopyPhone(const fs::path& source, const fs::path& phone, const fs::path& firmware)
{
    Amount amount;
    fs::create_directory(phone);
    for (const std::string tree : kPhoneTrees) {
        const fs::path& origin = tree == "phone" && !firmware.empty() ? firmware : source;
        if (IsRealFolder(origin / tree))
            CopyFolder(origin / tree, phone / tree, amount, 0);
        else if (!fs::exists(fs::symlink_status(origin / tree)))
            fs::create_directory(phone / tree);
        else
            throw ToolError("the image's " + tree + " is no folder"); // a link may lead anywhere
    }
}

void ClearPhone(const fs::path& phone)
{
    for (const char* tree : kPhoneTrees) {
        fs::create_directories(phone / tree);
        for (const fs::directory_entry& entry : fs::directory_iterator(phone / tree))
            fs::remove_all(entry.path());
    }
}

void MovePhone(const fs::path& source, const fs::path& phone)
{
    for (const char* tree : kPhoneTrees) {
        for (const fs::directory_entry& entry : fs::directory_iterator(source / tree))
            fs::rename(entry.path(), phone / tree / entry.path().filename());
        GiveBits(phone / tree, StatusOf(source / tree).st_mode & 07777);
    }
}

void PutFile(const fs::path& phone, const std::string& devicePath, const std::string& bytes)
{
    const fs::path path = phone / fs::path(devicePath).relative_path();
    fs::path folder = phone;
    for (const fs::path& name : fs::path(devicePath).relative_path().parent_path()) {
        folder /= name;
        fs::create_directory(folder); // does nothing if there is one
        if (!IsRealFolder(folder))
            throw ToolError("cannot replace " + devicePath + ": the image has a link in its path");
    }
    fs::remove(path);
    WriteWhole(path, bytes);
}

fs::path OpenImage(const fs::path& image, const fs::path& scratch)
{
    if (fs::is_regular_file(image))
        ExtractArchive(image, scratch);
    else if (!fs::is_directory(image))
        throw ToolError("no such image");
    const auto trees = FindTrees(fs::is_directory(image) ? image : scratch);
    if (!trees)
        throw ToolError("no image of a phone: it has neither config nor phone nor tmp");
    return *trees;
}

fs::path OpenFirmware(const fs::path& firmware, const fs::path& scratch)
{
    fs::path trees = OpenImage(firmware, scratch);
    if (!IsRealFolder(trees / "phone"))
        throw ToolError("the firmware has no folder phone: " + firmware.string());
    return trees;
}
