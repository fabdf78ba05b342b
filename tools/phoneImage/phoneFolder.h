// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>

/// A phone's file system in a folder: "config", "phone" and "tmp" below it.
class PhoneFolder
{
public:
    explicit PhoneFolder(const std::string& path);
    ~PhoneFolder();
    PhoneFolder(const PhoneFolder&) = delete;
    PhoneFolder& operator=(const PhoneFolder&) = delete;

    /// @return false when it is no folder, or when this machine cannot look paths up in it (Linux before 5.6): without
    ///         this, every file would seem to be missing
    bool IsOpen() const { return Find("/").has_value(); }

    /// Looks a path up as the phone would, with the folder for its root: no link and no ".." leads out of the folder.
    ///
    /// @return the path of the file on this machine; nothing when the phone has no such file
    std::optional<std::string> Find(const std::string& devicePath) const;

private:
    int number_; ///< the folder's descriptor
};
