// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fileAttributes.h"

#include <cerrno>
#include <cstring>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

#include "fileReplacement.h"

namespace
{

constexpr char kAccessList[] = "system.posix_acl_access"; // acl(5)
constexpr mode_t kPermissionBits = 07777;
constexpr mode_t kGroupAndOthers = S_IRWXG | S_IRWXO;

bool IsUnknownHere(int error)
{
    return error == ENOTSUP || error == ENODATA || error == ENOSYS;
}

/// If in doubt, a file counts as one that has an access list.
bool HasAccessList(const std::string& path)
{
    return getxattr(path.c_str(), kAccessList, nullptr, 0) >= 0 || !IsUnknownHere(errno);
}

/// The permission bits that a file made from this one may have. If the file has an access list, the group's bits are
/// its mask, and the list may name other users.
mode_t BitsToShow(const std::string& path, const struct stat& status)
{
    const mode_t bits = status.st_mode & kPermissionBits;
    return HasAccessList(path) ? bits & ~kGroupAndOthers : bits;
}

bool CopyAttribute(const std::string& from, const char* name, int to)
{
    const ssize_t size = getxattr(from.c_str(), name, nullptr, 0);
    if (size < 0)
        return false;
    std::vector<char> value(static_cast<std::size_t>(size) + 1); // never empty, so that it has an address
    const ssize_t read = getxattr(from.c_str(), name, value.data(), static_cast<std::size_t>(size));
    return read >= 0 && fsetxattr(to, name, value.data(), static_cast<std::size_t>(read), 0) == 0;
}

/// Also removes an access list that the new file got from its folder, if the other file has none.
///
/// @return false if the access list could not be kept; other attributes are kept as far as possible
bool CopyExtendedAttributes(const std::string& from, int to)
{
    const ssize_t size = listxattr(from.c_str(), nullptr, 0);
    if (size < 0 && !IsUnknownHere(errno))
        return false;
    std::vector<char> names(size > 0 ? static_cast<std::size_t>(size) : 0);
    const ssize_t length = names.empty() ? 0 : listxattr(from.c_str(), names.data(), names.size());
    if (length < 0)
        return false;

    bool hasAccessList = false;
    for (const char* name = names.data(); name < names.data() + length; name += std::strlen(name) + 1) {
        const bool isAccessList = std::strcmp(name, kAccessList) == 0;
        hasAccessList |= isAccessList;
        if (!CopyAttribute(from, name, to) && isAccessList)
            return false;
    }
    return hasAccessList || fremovexattr(to, kAccessList) == 0 || IsUnknownHere(errno);
}

/// The bits that add no reader if users become members of "group" or "others" who were not before.
mode_t CommonBits(mode_t mode)
{
    const mode_t common = (mode >> 3) & mode & S_IRWXO;
    return (mode & S_IRWXU) | common << 3 | common;
}

/// @param path  the file that has this owner
/// @param mode  the future bits; reduced if the owner or group cannot be set
/// @return 0; otherwise the error number
int GiveOwner(int file, const std::string& path, const struct stat& like, mode_t& mode)
{
    struct stat made = {};
    if (fstat(file, &made) != 0)
        return errno;
    if ((made.st_uid == like.st_uid && made.st_gid == like.st_gid) || fchown(file, like.st_uid, like.st_gid) == 0)
        return 0;
    if (errno != EPERM)
        return errno;
    // A user whom an access list excludes may count as one of the others now.
    mode = HasAccessList(path) ? mode & ~kGroupAndOthers : CommonBits(mode);
    return 0;
}

/// The source of the new file's owner, group and bits.
struct Model {
    const std::string* path; ///< null for a new file without a source
    struct stat status;
    mode_t mode;
    bool isKeptWhole; ///< including its access list and extended attributes
};

/// @return 0; otherwise the error number
int FindModel(const FileOrigin& origin, Model& model)
{
    struct stat source = {};
    const bool hasSource = !origin.source.empty() && stat(origin.source.c_str(), &source) == 0;
    if (!origin.replaced.empty()) {
        model.path = &origin.replaced;
        if (lstat(model.path->c_str(), &model.status) != 0)
            return errno;
        model.mode = model.status.st_mode & kPermissionBits;
        if (hasSource && origin.madeOf == MadeOf::ACopy)
            model.mode &= BitsToShow(origin.source, source);
        model.isKeptWhole = true;
        return 0;
    }
    if (!hasSource) {
        model = {nullptr, {}, ModeOfNewFile(origin.newFileMode), /*isKeptWhole=*/false};
        return 0;
    }
    model = {&origin.source, source, static_cast<mode_t>(source.st_mode & kPermissionBits), /*isKeptWhole=*/true};
    if (origin.madeOf == MadeOf::Another) {
        model.mode = ModeOfNewFile(origin.newFileMode) & (BitsToShow(origin.source, source) | S_IWUSR);
        model.isKeptWhole = false;
    }
    return 0;
}

} // namespace

mode_t ModeOfNewFile(mode_t newFileMode)
{
    if (newFileMode != kModeLessUmask)
        return newFileMode;
    const mode_t mask = umask(0);
    (void)umask(mask);
    return 0644 & ~mask;
}

int GiveAttributes(int file, const FileOrigin& origin)
{
    Model model = {};
    if (const int error = FindModel(origin, model))
        return error;
    if (model.path != nullptr) {
        // Before the bits, since a change of owner clears some of them.
        if (const int error = GiveOwner(file, *model.path, model.status, model.mode))
            return error;
        const bool isKept = model.isKeptWhole ? CopyExtendedAttributes(*model.path, file)
                                              : fremovexattr(file, kAccessList) == 0 || IsUnknownHere(errno);
        if (!isKept)
            model.mode &= ~kGroupAndOthers;
    }
    return fchmod(file, model.mode) == 0 ? 0 : errno;
}
