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
    std::string defaultText; ///< value of an absent key
    std::string filePath;    ///< ignored when `perAccount` is set
    std::string section;
    std::string key;
    bool perAccount = false; ///< the entry is in every account file instead of `filePath`
    bool active = true;      ///< false: to be skipped
};

constexpr char kEntryListFile[] = "/phone/resource/encryptconfig.xml";

/// The device's list of enciphered entries (docs/passes.md).
class CConfigMapper
{
public:
    /// @param path  the list's file; not copied, so it must live as long as the mapper
    explicit CConfigMapper(const char* path = kEntryListFile) : path_(path) {}

    /// Fills the list in file order.
    ///
    /// @param entries  receives pointers to records that this mapper owns
    /// @return non-zero on success; 0 if the file is missing or does not load; the list is then unchanged
    int GetAllEncryptConfig(std::list<CIniConfigInfo*>& entries);

private:
    const char* path_;
    std::vector<std::unique_ptr<CIniConfigInfo>> records_;
};
