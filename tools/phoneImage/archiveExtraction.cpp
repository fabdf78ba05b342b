// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "archiveExtraction.h"

#include <archive.h>
#include <archive_entry.h>
#include <memory>
#include <mutex>
#include <string>
#include <sys/stat.h>

#include "imageLimits.h"
#include "toolError.h"

namespace fs = std::filesystem;

namespace
{

constexpr std::size_t kLongestPath = 1024;

struct FreeArchive {
    void operator()(archive* opened) const { (void)archive_free(opened); } // what has to be checked was closed
};
using Archive = std::unique_ptr<archive, FreeArchive>;

[[noreturn]] void Refuse(const std::string& path, const std::string& reason)
{
    throw ToolError("archive refused: \"" + path + "\" " + reason);
}

std::string ErrorOf(const Archive& opened)
{
    const char* error = archive_error_string(opened.get());
    return error == nullptr ? "unknown error" : error;
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

/// What the library does not refuse by itself.
class Limits
{
public:
    void Check(archive_entry* entry)
    {
        const char* name = archive_entry_pathname(entry);
        const std::string path = name == nullptr ? "" : name;
        if (path.empty() || path.size() > kLongestPath)
            Refuse(path, "has no name or one that is too long");
        if (path.front() == '/') // becomes a path below our folder, which would hide the intent
            Refuse(path, "is an absolute path");
        if (++entries_ > kMostEntries)
            throw ToolError("archive refused: more than " + std::to_string(kMostEntries) + " files");
        if (archive_entry_hardlink(entry) == nullptr)
            CheckKind(path, entry);
    }

private:
    void CheckKind(const std::string& path, archive_entry* entry)
    {
        switch (archive_entry_filetype(entry)) {
        case AE_IFDIR:
            return;
        case AE_IFREG:
            return CountBytes(path, archive_entry_size(entry));
        case AE_IFLNK:
            if (!StaysInside(path, archive_entry_symlink(entry)))
                Refuse(path, "is a link that leads out of the phone");
            return;
        default:
            Refuse(path, "is a device, pipe or socket");
        }
    }

    void CountBytes(const std::string& path, la_int64_t size)
    {
        bytes_ += static_cast<std::uint64_t>(size);
        if (size > static_cast<la_int64_t>(kMostFileBytes) || bytes_ > kMostImageBytes)
            Refuse(path, "is too large");
    }

    std::size_t entries_ = 0;
    std::uint64_t bytes_ = 0;
};

/// Gives an entry its place in the folder, and only those bits that a copy may have: we have to read it and to remove it.
void MoveInto(const fs::path& folder, archive_entry* entry)
{
    const bool isFolder = archive_entry_filetype(entry) == AE_IFDIR;
    const mode_t bits = archive_entry_perm(entry);
    archive_entry_set_perm(entry, isFolder ? (bits & 01777) | S_IRWXU : (bits & 0777) | S_IRUSR);
    const fs::path path = folder / archive_entry_pathname(entry);
    if (!isFolder && fs::exists(fs::symlink_status(path)))
        Refuse(archive_entry_pathname(entry), "is in it twice");
    archive_entry_copy_pathname(entry, path.c_str());
    if (const char* target = archive_entry_hardlink(entry); target != nullptr)
        archive_entry_copy_hardlink(entry, (folder / fs::path(target).relative_path()).c_str());
}

Archive OpenReader(const fs::path& path)
{
    Archive reader(archive_read_new());
    if (reader == nullptr)
        throw std::bad_alloc();
    archive_read_support_format_tar(reader.get());
    archive_read_support_filter_gzip(reader.get());
    if (archive_read_open_filename(reader.get(), path.c_str(), 65536) != ARCHIVE_OK)
        throw ToolError("neither a folder nor a .tar or .tar.gz archive");
    return reader;
}

/// The library sets the umask of the process to 0 for a moment: two threads could leave it so.
archive* NewDiskWriter()
{
    static std::mutex umaskMutex;
    const std::lock_guard lock(umaskMutex);
    return archive_write_disk_new();
}

Archive OpenWriter()
{
    Archive writer(NewDiskWriter());
    if (writer == nullptr)
        throw std::bad_alloc();
    archive_write_disk_set_options(writer.get(), ARCHIVE_EXTRACT_PERM | ARCHIVE_EXTRACT_NO_OVERWRITE |
                                                     ARCHIVE_EXTRACT_SECURE_NODOTDOT | ARCHIVE_EXTRACT_SECURE_SYMLINKS);
    return writer;
}

} // namespace

void ExtractArchive(const fs::path& path, const fs::path& folder)
{
    const Archive reader = OpenReader(path);
    const Archive writer = OpenWriter();
    fs::create_directory(folder);
    const fs::path realFolder = fs::canonical(folder); // links above our folder are none of the archive's
    Limits limits;
    archive_entry* entry = nullptr;
    int result = ARCHIVE_OK;
    while ((result = archive_read_next_header(reader.get(), &entry)) == ARCHIVE_OK) {
        limits.Check(entry);
        const std::string name = archive_entry_pathname(entry);
        MoveInto(realFolder, entry);
        if (archive_read_extract2(reader.get(), entry, writer.get()) != ARCHIVE_OK)
            Refuse(name, "cannot be extracted: " + ErrorOf(reader));
    }
    if (result != ARCHIVE_EOF)
        throw ToolError("the archive is damaged: " + ErrorOf(reader));
    if (archive_write_close(writer.get()) != ARCHIVE_OK)
        throw ToolError("archive refused: " + ErrorOf(writer));
}
