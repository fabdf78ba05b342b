// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>

/// Extracts a .tar or .tar.gz archive of unknown origin. Throws `ToolError`, and may leave a part of the files, for an
/// archive that is damaged or contains
/// - a path that is absolute, has a "..", is too long, is there twice, or goes through a link,
/// - a link that leads out of the phone,
/// - a device, pipe or socket,
/// - more files or bytes than an image may have; holes of a file count as bytes.
///
/// Owners are not kept. Permission bits are, without those that change the user or the group.
///
/// @param folder  is made
void ExtractArchive(const std::filesystem::path& archive, const std::filesystem::path& folder);
