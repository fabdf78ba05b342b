// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <map>
#include <memory>
#include <string>

#include "finding.h"
#include "iniFile.h"
#include "keyedCipher.h"

class PhoneFolder;
struct TableRecord;

/// Rules about what the table does to one phone. Takes the records in the table's order and works them off on documents
/// in memory, so that a record meets what the ones before it have written. Nothing is saved.
///
/// The phone is taken for locked, whether it is or not: the next one may be.
class ImageRules
{
public:
    /// @param phone  outlives this
    explicit ImageRules(const PhoneFolder& phone);

    /// @param findings  holds what the other rules found in this record
    void Check(const TableRecord& record, Findings& findings);

private:
    std::string ReadSource(const TableRecord& record, Findings& findings);
    void CheckStaysEnciphered(const TableRecord& record, const std::string& value, Findings& findings) const;
    bool IsLostToCipher(const TableRecord& record, const std::string& value, Findings& findings) const;
    void Write(const TableRecord& record, const std::string& value, bool isLost, Findings& findings);
    iniFile* Document(const std::string& devicePath);

    const PhoneFolder& phone_;
    std::string keyFile_; ///< before the cipher, which keeps its address
    KeyedCipher cipher_;
    std::map<std::string, std::unique_ptr<iniFile>> documents_; ///< by path on this machine; null: does not load
};
