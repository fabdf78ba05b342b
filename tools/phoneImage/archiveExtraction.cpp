// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "archiveExtraction.h"

#include <archive.h>
#include <archive_entry.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "descriptor.h"
#include "imageLimits.h"
#include "toolError.h"

namespace fs = std::filesystem;

namespace
{

constexpr std::size_t kLongestPath = 1024;

struct FreeArchive {
    void operator()(archive* opened) const { (void)archive_read_free(opened); }
};

[[noreturn]] void Refuse(const std::string& path, const char* reason)
{
    throw ToolError("archive refused: \"" + path + "\" " + reason);
}

/// The path inside of the folder; empty for the folder itself.
fs::path SafePath(const std::string& name)
{
    if (name.empty() || name.size() > kLongestPath)
        Refuse(name, "has no name or one that is too long");
    if (name.front() == '/')
        Refuse(name, "is an absolute path");
    fs::path path;
    for (const fs::path& part : fs::path(name)) {
        if (part == "..")
            Refuse(name, "leads out of the archive");
        if (part != "." && !part.empty())
            path /= part;
    }
    return path;
}

/// Whether a link stays within the phone: an absolute one names a path in one of its trees, a relative one does not
/// climb above the archive's top.
bool StaysInside(const fs::path& link, const std::string& target)
{
    const fs::path normal = fs::path(target).lexically_normal();
    if (!normal.is_absolute()) {
        const fs::path reached = (link.parent_path() / normal).lexically_normal();
        return reached.empty() || *reached.begin() != "..";
    }
    const std::string tree = normal.relative_path().empty() ? "" : normal.relative_path().begin()->string();
    for (const char* known : kPhoneTrees) {
        if (tree == known)
            return true;
    }
    return false;
}

/// One extraction. Links are made when everything else is there, so that no path ever goes through one; bits of folders
/// are given last, so that they do not keep us out.
class Extraction
{
public:
    Extraction(archive* opened, const fs::path& folder) : archive_(opened), folder_(folder) {}

    void Add(archive_entry* entry)
    {
        const char* name = archive_entry_pathname(entry);
        const fs::path path = SafePath(name == nullptr ? "" : name);
        if (++entries_ > kMostEntries)
            throw ToolError("archive refused: more than " + std::to_string(kMostEntries) + " files");
        if (archive_entry_hardlink(entry) != nullptr)
            return AddHardLink(path, archive_entry_hardlink(entry));
        switch (archive_entry_filetype(entry)) {
        case AE_IFDIR:
            fs::create_directories(folder_ / path);
            bits_.emplace_back(folder_ / path, (archive_entry_perm(entry) & 01777) | S_IRWXU);
            return;
        case AE_IFREG:
            if (archive_entry_size(entry) > static_cast<la_int64_t>(kMostFileBytes)) // holes are not read
                Refuse(path.string(), "is too large");
            return AddFile(path, (archive_entry_perm(entry) & 0777) | S_IRUSR);
        case AE_IFLNK:
            return AddLink(path, archive_entry_symlink(entry));
        default:
            Refuse(path.string(), "is a device, pipe or socket");
        }
    }

    void Finish()
    {
        for (const auto& [path, target] : links_) {
            fs::create_directories((folder_ / path).parent_path());
            if (fs::exists(fs::symlink_status(folder_ / path)))
                Refuse(path.string(), "is a link and something else as well");
            fs::create_symlink(target, folder_ / path);
        }
        for (const auto& [path, bits] : bits_) {
            if (chmod(path.c_str(), bits) != 0)
                throw ToolError("cannot set the bits of " + path.string());
        }
    }

private:
    void AddFile(const fs::path& path, mode_t bits)
    {
        fs::create_directories((folder_ / path).parent_path());
        const int number = open((folder_ / path).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
        const Descriptor file(number);
        if (!file.IsOpen())
            Refuse(path.string(), "stands in it twice or cannot be written");
        char block[65536];
        std::size_t fileBytes = 0;
        la_ssize_t size = 0;
        while ((size = archive_read_data(archive_, block, sizeof block)) > 0) {
            fileBytes += static_cast<std::size_t>(size);
            bytes_ += static_cast<std::uint64_t>(size);
            if (fileBytes > kMostFileBytes || bytes_ > kMostImageBytes)
                Refuse(path.string(), "is too large");
            if (!WriteAll(file.Number(), {block, static_cast<std::size_t>(size)}))
                throw ToolError("cannot write " + path.string() + ": " + std::strerror(errno));
        }
        if (size < 0)
            throw ToolError(std::string("the archive is damaged: ") + archive_error_string(archive_));
        if (fchmod(file.Number(), bits) != 0)
            throw ToolError("cannot set the bits of " + path.string());
    }

    void AddLink(const fs::path& path, const char* target)
    {
        if (path.empty() || target == nullptr || *target == '\0' || !StaysInside(path, target))
            Refuse(path.string(), "is a link that leads out of the phone");
        links_.emplace_back(path, target);
    }

    /// Two names of one file become two files.
    void AddHardLink(const fs::path& path, const std::string& target)
    {
        const fs::path original = folder_ / SafePath(target);
        if (!fs::is_regular_file(fs::symlink_status(original)))
            Refuse(path.string(), "is a hard link to what is no file of the archive");
        bytes_ += fs::file_size(original);
        if (bytes_ > kMostImageBytes)
            Refuse(path.string(), "is too large");
        fs::create_directories((folder_ / path).parent_path());
        if (!fs::copy_file(original, folder_ / path, fs::copy_options::skip_existing))
            Refuse(path.string(), "stands in it twice");
    }

    archive* archive_;
    fs::path folder_;
    std::size_t entries_ = 0;
    std::uint64_t bytes_ = 0;
    std::vector<std::pair<fs::path, std::string>> links_;
    std::vector<std::pair<fs::path, mode_t>> bits_;
};

void AddAll(archive* opened, Extraction& extraction)
{
    for (;;) {
        archive_entry* entry = nullptr;
        const int result = archive_read_next_header(opened, &entry);
        if (result == ARCHIVE_EOF)
            return;
        if (result != ARCHIVE_OK) {
            const char* error = archive_error_string(opened);
            throw ToolError(std::string("the archive is damaged: ") + (error == nullptr ? "unknown" : error));
        }
        extraction.Add(entry);
    }
}

} // namespace

void ExtractArchive(const fs::path& path, const fs::path& folder)
{
    const std::unique_ptr<archive, FreeArchive> opened(archive_read_new());
    if (opened == nullptr)
        throw ToolError("no memory for the archive");
    archive_read_support_format_tar(opened.get());
    archive_read_support_filter_gzip(opened.get());
    if (archive_read_open_filename(opened.get(), path.c_str(), 65536) != ARCHIVE_OK)
        throw ToolError("neither a folder nor a .tar or .tar.gz archive");

    fs::create_directory(folder);
    Extraction extraction(opened.get(), folder);
    try {
        AddAll(opened.get(), extraction);
        extraction.Finish();
    } catch (const fs::filesystem_error& error) {
        throw ToolError(std::string("archive refused: ") + error.code().message()); // a file where a folder has to be
    }
}
