// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// @return the path of the file that a path of the lists names: without "//", "/./" and "/../"
std::string NormalPath(const std::string& path);
