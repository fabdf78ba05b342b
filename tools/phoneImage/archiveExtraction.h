// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>

/// Extracts a .tar or .tar.gz archive of unknown origin. Throws `ToolError`, and may leave a part, for an archive that
/// is damaged or has
/// - a path that is absolute, has a ".." or is too long,
/// - a link that leads out of the phone, or a path that goes through a link,
/// - a device, pipe or socket,
/// - more files or bytes than an image may have.
///
/// Owners are not kept; permission bits are, without those for changing the user or group.
///
/// @param folder  is made
void ExtractArchive(const std::filesystem::path& archive, const std::filesystem::path& folder);
