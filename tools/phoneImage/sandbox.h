// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "childProcess.h"

/// Programs by their paths in the sandbox.
using SandboxPrograms = std::vector<std::pair<std::string, std::filesystem::path>>;

/// @return the command that runs a program in a bubblewrap sandbox. The program finds the phone's trees at the device's own
///         paths, this machine's programs read-only, no network, and nothing else of this machine.
///
/// @param phone     folder with config, phone and tmp: all of this machine that the program can write to
/// @param programs  further programs of this machine
/// @param started   path in the sandbox of the program that is run
std::vector<std::string> SandboxCommand(const std::filesystem::path& phone, const SandboxPrograms& programs,
                                        const std::string& started);

/// Checks that this machine can run programs in a sandbox. Throws a `ToolError` that says what is missing.
void RequireSandbox();

/// @return why a run in the sandbox failed: the sandbox's own lines only, since those of the program in it may contain
///         secrets
std::string SandboxWords(const ChildResult& result);
