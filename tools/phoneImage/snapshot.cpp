// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "snapshot.h"

#include <sys/stat.h>

#include "imageLimits.h"
#include "scratch.h"
#include "toolError.h"

namespace fs = std::filesystem;

namespace
{

PhoneFile ReadEntry(const fs::path& path)
{
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0)
        throw ToolError("cannot read " + path.string());
    PhoneFile file;
    file.mode = status.st_mode & 07777;
    std::string content;
    if (S_ISREG(status.st_mode)) {
        file.kind = PhoneFile::Kind::File;
        content = ReadWhole(path, kMostFileBytes);
    } else if (S_ISLNK(status.st_mode)) {
        file.kind = PhoneFile::Kind::Link;
        content = fs::read_symlink(path).string();
    } else if (S_ISDIR(status.st_mode)) {
        file.kind = PhoneFile::Kind::Folder;
    }
    file.content = std::make_shared<const std::string>(std::move(content));
    return file;
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
    const std::size_t rootSize = phone.string().size();
    for (const char* tree : kPhoneTrees) {
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(phone / tree)) {
            const std::string path = entry.path().string().substr(rootSize);
            PhoneFile file = ReadEntry(entry.path());
            const auto before = previous.find(path);
            if (before != previous.end() && *before->second.content == *file.content)
                file.content = before->second.content;
            snapshot.emplace(path, std::move(file));
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
