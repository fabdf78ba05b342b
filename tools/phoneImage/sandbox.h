// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// The command that runs a program in a bubblewrap sandbox over a phone: it finds the phone's trees at the device's own
/// paths, this machine's programs read-only, no network, and nothing else of this machine.
///
/// @param phone    folder with config, phone and tmp; the only place that can be written to
/// @param program  shown to itself as /kestrune
std::vector<std::string> SandboxCommand(const std::filesystem::path& phone, const std::filesystem::path& program,
                                        const std::vector<std::string>& arguments);
