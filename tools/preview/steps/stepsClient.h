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

/// The programs that a preview starts.
struct PreviewPrograms {
    std::filesystem::path program;  ///< the unmodified one
    std::filesystem::path steps;    ///< kestrune-preview-steps
    std::filesystem::path emulator; ///< starts the unmodified one, which is for another kind of machine; empty for none
    std::filesystem::path sysroot;  ///< folder with lib and usr/lib for the emulator's -L; empty for none
};

/// A sandbox over a phone, in which the program runs, and in which the program's own code says what it knows of the phone. All
/// functions throw `ToolError` when the sandbox fails or a run takes more than a minute.
class StepsClient
{
public:
    /// @param programs  of which kestrune-preview-steps waits in the sandbox for what it is asked
    /// @param phone     folder with the phone's trees; they may be filled in another way between the calls
    StepsClient(const PreviewPrograms& programs, const std::filesystem::path& phone);

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

    std::vector<std::string> start_; ///< what starts the unmodified program in the sandbox, without the mode
    std::unique_ptr<TalkingChild> sandbox_;
};
