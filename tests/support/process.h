// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

/// The result of a finished process.
struct ProcessResult {
    int exitStatus = -1; ///< as in the shell: 128 plus the number of a signal that killed it
    std::string output;  ///< of standard output
    std::string errors;  ///< of standard error
};

/// Runs a program to its end, with nothing on its standard input.
///
/// @param arguments    the program, searched on PATH, and its arguments
/// @param environment  "NAME=value"; the whole environment
ProcessResult RunProcess(const std::vector<std::string>& arguments, const std::vector<std::string>& environment);
