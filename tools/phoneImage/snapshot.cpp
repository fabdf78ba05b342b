// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "snapshot.h"

#include <algorithm>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>

#include "descriptor.h"
#include "imageLimits.h"
#include "toolError.h"

namespace fs = std::filesystem;

namespace
{

using Content = std::shared_ptr<const std::string>;

/// What is no regular file.
PhoneFile ReadEntry(const fs::path& path)
{
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0)
        throw ToolError("cannot read " + path.string());
    PhoneFile file;
    file.mode = status.st_mode & 07777;
    std::string target;
    if (S_ISLNK(status.st_mode)) {
        file.kind = PhoneFile::Kind::Link;
        target = fs::read_symlink(path).string();
    } else if (S_ISDIR(status.st_mode)) {
        file.kind = PhoneFile::Kind::Folder;
    }
    file.content = std::make_shared<const std::string>(std::move(target));
    return file;
}

/// Most files are what they were: those are read without a copy.
PhoneFile ReadFile(const fs::path& path, const Content& previous, std::string& buffer)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    if (!file.IsOpen() || fstat(file.Number(), &status) != 0)
        throw ToolError("cannot read " + path.string());
    if (status.st_size > static_cast<off_t>(kMostFileBytes))
        throw ToolError(path.string() + " has more than " + std::to_string(kMostFileBytes) + " bytes");
    const auto size = static_cast<std::size_t>(status.st_size);
    buffer.resize(std::max(buffer.size(), size));
    if (ReadInto(file.Number(), buffer.data(), size) != status.st_size)
        throw ToolError("cannot read " + path.string());
    const std::string_view bytes(buffer.data(), size);
    return {PhoneFile::Kind::File, status.st_mode & 07777,
            previous != nullptr && *previous == bytes ? previous : std::make_shared<const std::string>(bytes)};
}

} // namespace

bool operator==(const PhoneFile& one, const PhoneFile& other)
{
    return one.kind == other.kind && one.mode == other.mode &&
           (one.content == other.content || *one.content == *other.content);
}

Snapshot TakeSnapshot(const fs::path& phone, const Snapshot& previous)
{
    Snapshot snapshot;
    std::string buffer;
    const std::size_t rootSize = phone.string().size();
    for (const char* tree : kPhoneTrees) {
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(phone / tree)) {
            std::string path = entry.path().string().substr(rootSize);
            const auto before = previous.find(path);
            const bool isFile = !entry.is_symlink() && entry.is_regular_file();
            snapshot.emplace(
                std::move(path),
                isFile ? ReadFile(entry.path(), before == previous.end() ? nullptr : before->second.content, buffer)
                       : ReadEntry(entry.path()));
        }
    }
    return snapshot;
}

const std::string& ContentOf(const Snapshot& snapshot, const std::string& path)
{
    static const std::string nothing; // what the reference is to where there is no file
    const auto found = snapshot.find(path);
    return found != snapshot.end() && found->second.kind == PhoneFile::Kind::File ? *found->second.content : nothing;
}

bool IsFile(const Snapshot& snapshot, const std::string& path)
{
    const auto found = snapshot.find(path);
    return found != snapshot.end() && found->second.kind == PhoneFile::Kind::File;
}
