// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <optional>
#include <string>

/// Finds a phone in its image: a folder or a .tar, .tar.gz archive with the trees config/, phone/ and tmp/ (at least one of
/// them), at its top or in one folder there. The image is only read.
///
/// Throws `ToolError` for what is no image, cannot be read or is beyond a limit, and for an archive with a path that
/// is absolute or has "..", a link that leads out of the phone, or a device.
///
/// @param scratch  folder to make for the files of an archive
/// @return the folder with the trees
std::filesystem::path OpenImage(const std::filesystem::path& image, const std::filesystem::path& scratch);

/// As `OpenImage`, for a firmware: throws `ToolError` when it has no tree phone/.
std::filesystem::path OpenFirmware(const std::filesystem::path& firmware, const std::filesystem::path& scratch);

/// Finds the trees of a phone in a folder. Follows no link in it. Throws `std::filesystem::filesystem_error` for a folder that
/// cannot be read.
///
/// @return the folder itself, or the only folder in it; nothing when neither has a tree
std::optional<std::filesystem::path> FindTrees(const std::filesystem::path& folder);

/// Copies a phone's trees from one folder to another, which is made unless it is an empty phone. A tree that is missing is
/// made empty; one that is a link or a file is an error. Links are copied as links and never followed; what is no file,
/// folder or link is left out.
/// Names keep their bytes. Throws `ToolError` for what cannot be read or is beyond a limit.
///
/// @param firmware  folder whose tree phone/ is copied instead of the source's; empty for none
void CopyPhone(const std::filesystem::path& source, const std::filesystem::path& phone,
               const std::filesystem::path& firmware = std::filesystem::path());

/// Empties a copied phone, or makes an empty one. The folders of its trees stay the same ones: a sandbox over them shows
/// what they get next. Throws when it cannot.
void ClearPhone(const std::filesystem::path& phone);

/// Moves what a copied phone has into an empty one on the same file system. Throws when it cannot.
void MovePhone(const std::filesystem::path& source, const std::filesystem::path& phone);

/// Makes or replaces a file of a copied phone, with the folders that it needs. Follows no link: one in place of a folder is
/// an error, one in place of the file is replaced.
///
/// @param devicePath  such as "/phone/resource/kestrune.xml"
void PutFile(const std::filesystem::path& phone, const std::string& devicePath, const std::string& bytes);
