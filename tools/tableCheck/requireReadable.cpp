// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "requireReadable.h"

#include <cerrno>
#include <filesystem>
#include <unistd.h>

#include "phoneImage/toolError.h"

void RequireReadable(const std::string& what, const std::string& path)
{
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        error = std::make_error_code(std::errc::is_a_directory);
    else if (access(path.c_str(), R_OK) != 0)
        error = std::error_code(errno, std::generic_category());
    if (error)
        throw ToolError(what + " cannot be read: " + path + ": " + error.message());
}
