// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

/// Certificate sync: copies every factory certificate whose name is missing in the user folder.
///
/// Reads:     /phone/factory/certs/phoneca/
/// Writes:    /config/certs/phoneca/ (adds files with the shell's copy command; never replaces a file, and removes only
///            copies that are too short)
/// Result:    none
/// Failures:  without a factory folder, nothing happens; a failed copy is ignored, and the next run tries it again
/// Twice:     a second run copies nothing
void SyncFactoryCerts();

/// Lists a folder.
///
/// @param path     folder
/// @param entries  cleared, then filled with the names of all entries of any kind except "." and "..", in the order in
///                 which the system returns them; stays empty if the folder cannot be opened
void ListDirectoryEntries(const char* path, std::vector<std::string>& entries);
