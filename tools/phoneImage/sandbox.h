// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "childProcess.h"

/// @return the command that runs a program in a bubblewrap sandbox. The program finds the phone's trees at the device's own
///         paths, this machine's programs read-only, no network, and nothing else of this machine.
///
/// @param phone    folder with config, phone and tmp: all of this machine that the program can write to
/// @param program  is /kestrune in the sandbox
std::vector<std::string> SandboxCommand(const std::filesystem::path& phone, const std::filesystem::path& program,
                                        const std::vector<std::string>& arguments);

/// Checks that this machine can run programs in a sandbox. Throws a `ToolError` that says what is missing.
void RequireSandbox();

/// @return why a run in the sandbox failed: the sandbox's own lines only, since those of the program in it may contain
///         secrets
std::string SandboxWords(const ChildResult& result);
