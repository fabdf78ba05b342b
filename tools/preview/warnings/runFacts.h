// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "changes/fileChanges.h"
#include "secrets/secrets.h"
#include "steps/runReports.h"

/// What the warnings are found in. Initialise it by names: several members have one type.
struct RunFacts {
    const std::vector<std::string>& modes;
    const Snapshot& before;
    const Snapshot& after;
    const std::vector<PassState>& states; ///< empty when the passes are not known
    const std::vector<FileChange>& changes;
    const std::vector<FileChange>& secondRun;
    const std::vector<RunReports>& reports;
    const PhoneLists& lists;
    const Secrets& secrets;
};

/// @return whether one of these modes ran
bool HasMode(const RunFacts& facts, std::initializer_list<const char*> modes);

/// @return a value of a configuration file; empty when the file or the key is not there
std::string ReadValue(const Snapshot& phone, const std::string& file, const std::string& section,
                      const std::string& key);

/// @return whether `EnLock` of that user.ini says that secrets are enciphered
bool IsLocked(const Snapshot& phone, const std::string& userIni);

/// @return whether the cipher refuses the value: it is too long, or not of 7 bits
bool CannotBeEnciphered(const std::string& value);

/// @return such as "/config/user/user.ini [A] key"
std::string PlaceOf(const FileChange& file, const Item& item);
