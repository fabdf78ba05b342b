// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "phoneLists.h"

/// What the program's own code says about a phone, asked in a sandbox over it.
class StepsClient
{
public:
    /// @param program  kestrune-preview-steps
    StepsClient(std::filesystem::path program, std::filesystem::path phone);

    PhoneLists ReadLists() const;

    /// @return for each text the texts that it deciphers to in turn with the phone's key; none for a plain one
    std::vector<std::vector<std::string>> Decipher(const std::vector<std::string>& texts) const;

    /// Runs a mode pass by pass.
    ///
    /// @param atPassEnd  called with a pass's name when it has ended and before the next one begins
    /// @return whether the run came to its end
    bool RunSteps(const std::string& mode, const std::function<void(const std::string&)>& atPassEnd) const;

private:
    std::string Ask(const std::string& command, const std::string& input) const;

    std::filesystem::path program_;
    std::filesystem::path phone_;
};
