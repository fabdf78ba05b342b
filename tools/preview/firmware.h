// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "phoneImage/scratch.h"

/// What an upgrade brings to phones, instead of what is in their images: a firmware's /phone, a translation table, or both.
class Firmware
{
public:
    /// Reads both once, for any number of phones. Throws `ToolError`.
    ///
    /// @param firmware  folder or archive with the tree phone/; empty for each image's own
    /// @param table     file that replaces the translation table; empty for the firmware's
    Firmware(const std::filesystem::path& firmware, const std::filesystem::path& table);

    /// @return whether each phone is taken as it is
    bool IsNone() const { return trees_.empty() && !hasTable_; }

    /// Copies a phone as it is after the upgrade has been installed and before it has run. The image's cipher key is kept if
    /// the firmware has none: a phone's key does not come with a firmware. May be called by several threads.
    ///
    /// @param source  folder with the trees of the phone
    /// @param phone   folder to make
    void Install(const std::filesystem::path& source, const std::filesystem::path& phone) const;

private:
    std::unique_ptr<Scratch> scratch_; ///< of an archive
    std::filesystem::path trees_;      ///< folder that has the tree phone/; empty for each image's own
    bool hasTable_ = false;
    std::string table_;
};
