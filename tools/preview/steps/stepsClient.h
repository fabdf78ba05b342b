// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "phoneImage/childProcess.h"
#include "phoneLists.h"

/// A sandbox over a phone, in which the program runs, and in which the program's own code says what it knows of the phone. All
/// functions throw `ToolError` when the sandbox fails or a run takes more than a minute.
class StepsClient
{
public:
    /// @param steps    kestrune-preview-steps, which waits in the sandbox for what it is asked
    /// @param program  the unmodified program
    /// @param phone    folder with the phone's trees; they may be filled in another way between the calls
    StepsClient(const std::filesystem::path& steps, const std::filesystem::path& program,
                const std::filesystem::path& phone);

    PhoneLists ReadLists() const;

    /// @return for each text the texts that it deciphers to in turn with the phone's key; none for a plain one
    std::vector<std::vector<std::string>> Decipher(const std::vector<std::string>& texts) const;

    /// Runs a mode pass by pass.
    ///
    /// @param atPassEnd  called with a pass's name when it has ended and before the next one begins
    /// @return whether the run came to its end
    bool RunSteps(const std::string& mode, const std::function<void(const std::string&)>& atPassEnd) const;

    /// Runs a mode with the unmodified program. When it has ended, so have all processes that it started.
    ChildResult RunProgram(const std::string& mode) const;

private:
    nlohmann::json Ask(const nlohmann::json& question) const;

    std::unique_ptr<TalkingChild> sandbox_;
};
