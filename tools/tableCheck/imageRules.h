// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <map>
#include <string>
#include <string_view>

#include "finding.h"
#include "imageFile.h"
#include "keyedCipher.h"

class PhoneFolder;
struct TableRecord;

/// Rules about what the table does to one phone. Takes the records in the table's order and applies them to the image's
/// files in memory, so that each record finds what earlier ones have written. Nothing is saved.
///
/// Assumes that the phone is locked: the worst case.
class ImageRules
{
public:
    /// Throws `ToolError`, as `Check` does, for a file of the image that cannot be read.
    ///
    /// @param phone     outlives this
    /// @param otherKey  path of a cipher key for a phone that has none; may be empty
    ImageRules(const PhoneFolder& phone, const std::string& otherKey);

    /// @param findings  holds what the other rules found in this record
    void Check(const TableRecord& record, Findings& findings);

    /// Checks what the password pass does, after the last record.
    ///
    /// @param line  of the table's root, where it is reported
    void CheckPasswordPass(int line, Findings& findings);

private:
    /// What a record reads, and what to report where that empties the destination.
    struct Source {
        std::string value;
        std::string written;   ///< the value, but for one that the cipher loses
        std::string_view rule; ///< that the source breaks; empty when the image has it
        int line = 0;
        std::string whyEmpty;
    };

    Source ReadSource(const TableRecord& record, Findings& findings);
    bool IsEnciphered(const std::string& value) const;
    void CheckStaysEnciphered(const TableRecord& record, const std::string& value, Findings& findings) const;
    void CheckKey(int line, Findings& findings);
    bool IsLostToCipher(const TableRecord& record, const std::string& value, Findings& findings) const;
    void Write(const TableRecord& record, const Source& source, ImageFile& file, Findings& findings);
    ImageFile* Find(const std::string& devicePath);
    ImageFile* Load(const std::string& path);

    const PhoneFolder& phone_;
    std::string keyFile_; ///< before the cipher, which keeps its address
    KeyedCipher cipher_;
    bool isKeyReported_ = false;
    std::map<std::string, ImageFile*> files_; ///< by device path; null: missing or does not load
    std::map<std::string, ImageFile> loaded_; ///< by path on this machine: links of the phone lead to one file
};
