// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>

/// Copies a phone out of its image: a folder or a .tar, .tar.gz archive with the trees config/, phone/ and tmp/ (at
/// least one of them), at its top or in one folder there. The image is only read.
///
/// Links are copied as links and never followed; what is no file, folder or link is left out of a folder's copy. Names
/// keep their bytes.
///
/// Throws `ToolError` for what is no image, cannot be read or is beyond a limit, and for an archive with a path that
/// is absolute or has "..", a link that leads out of the phone, or a device.
///
/// @param phone    folder to make; gets all three trees
/// @param scratch  folder to make for the archive's files
void CopyImage(const std::filesystem::path& image, const std::filesystem::path& phone,
               const std::filesystem::path& scratch);

/// Copies a phone's trees from one folder to another, which is made. A tree that is missing is made empty; one that is a
/// link or a file is an error.
void CopyPhone(const std::filesystem::path& source, const std::filesystem::path& phone);
