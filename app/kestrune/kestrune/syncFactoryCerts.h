// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

/// Certificate sync: gives the user every factory certificate that the user folder lacks.
///
/// Reads:     /phone/factory/certs/phoneca/
/// Writes:    /config/certs/phoneca/ (adds files with the shell's copy command; never replaces one, and removes none but
///            a copy that came out short)
/// Result:    none
/// Failures:  no factory folder: nothing happens; a copy that fails goes unnoticed, and the next run tries it again
/// Twice:     a second run copies nothing
void SyncFactoryCerts();

/// Lists a folder.
///
/// @param path     folder
/// @param entries  emptied, then filled with the names of all entries of any kind but "." and "..", in the order in
///                 which the directory reading returns them; stays empty when the folder cannot be opened
void ListDirectoryEntries(const char* path, std::vector<std::string>& entries);
