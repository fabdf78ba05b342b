// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// @param what  names the file's role: "the table"
/// Throws `ToolError`, with the system's reason, for a folder and for what we may not read. The program's loaders do not
/// distinguish such a file from one that they refuse.
void RequireReadable(const std::string& what, const std::string& path);
