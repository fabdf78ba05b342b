// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <map>
#include <string>
#include <utility>

/// One configuration file of an image in memory, with what the table has written to it so far. Nothing is saved.
///
/// Holds the values by name, where the store searches its text: a table may have thousands of records for one file.
class ImageFile
{
public:
    /// @param path  on this machine. Throws `ToolError` for a file that the phone would load, but that we may not read.
    explicit ImageFile(const std::string& path);

    /// @return false for what the store does not load: a folder, a file beyond its limit
    bool Loads() const { return loads_; }

    /// @return true when the content is that of an XML, PEM or binary file
    bool IsForeign() const { return isForeign_; }

    /// @return the value as the store reads it, null when there is no such key; valid until the next `Set`
    const std::string* Find(const std::string& section, const std::string& key) const;

    /// @return false, and nothing is changed, for names and values that the store refuses
    bool Set(const std::string& section, const std::string& key, const std::string& value);

private:
    bool loads_ = false;
    bool isForeign_ = false;
    std::map<std::pair<std::string, std::string>, std::string> values_; ///< by section and key
};
