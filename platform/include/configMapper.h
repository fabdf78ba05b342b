// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <list>
#include <memory>
#include <string>
#include <vector>

/// One configuration entry that the device keeps enciphered.
struct CIniConfigInfo {
    std::string name;        ///< not read by this program
    std::string defaultText; ///< stands for an absent key
    std::string filePath;    ///< ignored when `perAccount` is set
    std::string section;
    std::string key;
    bool perAccount = false; ///< the entry lives in every account file instead of `filePath`
    bool active = true;      ///< clear: to be skipped
};

/// The device's list of enciphered entries (docs/encryptconfig.md).
class CConfigMapper
{
public:
    /// @param path  the list's file; kept by address, so a literal or at least alive as long as the mapper
    explicit CConfigMapper(const char* path = "/phone/resource/encryptconfig.xml") : path_(path) {}

    /// Fills the list in the file's order.
    ///
    /// @param entries  gets pointers to records that this mapper owns
    /// @return non-zero on success; 0, and the list stays as it was, when the file is missing or does not load
    int GetAllEncryptConfig(std::list<CIniConfigInfo*>& entries);

private:
    const char* path_;
    std::vector<std::unique_ptr<CIniConfigInfo>> records_;
};
