// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <string>
#include <vector>

/// What a program that has ended gave.
struct ChildResult {
    int exitStatus = -1; ///< 128 plus the number of a signal that killed it
    std::string output;
    std::string errors;
};

/// Runs a program to its end. Throws `ToolError` when it cannot be started, writes more than 64 MiB or has not ended after
/// a minute.
///
/// @param arguments  the program, searched on PATH, and its arguments
/// @param input      what it reads on its standard input
ChildResult RunChild(const std::vector<std::string>& arguments, const std::string& input = std::string());

/// Runs a program that writes a line and waits for a line, again and again. Throws `ToolError` when it cannot be started,
/// or takes more than a minute to the next line or to its end.
///
/// @param atLine  called with each line, before the program gets one and goes on
/// @return the program's exit status
int RunInSteps(const std::vector<std::string>& arguments, const std::function<void(const std::string&)>& atLine);
