// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "phoneFolder.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "descriptor.h"
#include "toolError.h"

PhoneFolder::PhoneFolder(const std::string& path) : number_(open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {}

PhoneFolder::~PhoneFolder()
{
    if (number_ >= 0)
        (void)close(number_); // nothing was written through it
}

std::optional<std::string> PhoneFolder::Find(const std::string& devicePath) const
{
    open_how how = {};
    how.flags = O_PATH | O_CLOEXEC;
    how.resolve = RESOLVE_IN_ROOT | RESOLVE_NO_MAGICLINKS;
    // The C library has no function of its own for it.
    const long number = syscall(SYS_openat2, number_, devicePath.c_str(), &how, sizeof how);
    if (number < 0 && errno == EACCES)
        throw ToolError("cannot look up " + devicePath + " in the image: " + std::strerror(errno));
    if (number < 0)
        return std::nullopt;
    const Descriptor found(static_cast<int>(number));
    std::error_code error;
    const auto path = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(number), error);
    return error ? std::nullopt : std::optional(path.string());
}
