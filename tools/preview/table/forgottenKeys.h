// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "items/fileFormats.h"
#include "phoneImage/snapshot.h"

struct ForgottenKey {
    std::string file; ///< kAllAccounts if it is one of them
    std::string section;
    std::string key;
    bool isOwn = false; ///< on some account, its value is not that of the old firmware's factory file
};

/// Finds the keys of a phone that the table forgets: those in the configuration files of the lists and passes below /config
/// that no record has as source or destination, no pass uses by itself, no entry names, and no factory file contains.
/// Records know a key in their own file only; all else knows it in all accounts. The hand-over copy and the file of the
/// direct-IP account are left out: modes "1" and "2" write and remove them.
///
/// @param before   the phone with the new firmware, before the run
/// @param old      the same phone with its old firmware
/// @param lists    of the new firmware; without a record nothing is forgotten: there is no table to write it in
/// @param formats  made of these lists
/// @return by file, section and key, each once
std::vector<ForgottenKey> FindForgottenKeys(const Snapshot& before, const Snapshot& old, const PhoneLists& lists,
                                            const FileFormats& formats);
