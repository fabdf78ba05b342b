// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "normalPath.h"

#include <filesystem>

std::string NormalPath(const std::string& path)
{
    // A table names a few files thousands of times, and nearly always so: dividing the path into names takes long.
    if (path.find("//") == std::string::npos && path.find("/.") == std::string::npos && !path.starts_with('.'))
        return path;
    return std::filesystem::path(path).lexically_normal().string();
}
