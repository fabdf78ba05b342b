// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <string>
#include <vector>

/// What a program that has ended left behind.
struct ChildResult {
    int exitStatus = -1; ///< 128 plus the number of a signal that killed it
    std::string output;
    std::string errors;
};

/// Runs a program, searched on PATH, to its end. Throws `ToolError` when it cannot be started, writes without end or
/// has not ended after a minute.
///
/// @param input  what it reads on its standard input
ChildResult RunChild(const std::vector<std::string>& arguments, const std::string& input = std::string());

/// Runs a program that writes a line and waits for a line, again and again.
///
/// @param atLine  called with each line, before the program goes on
/// @return the program's exit status
int RunInSteps(const std::vector<std::string>& arguments, const std::function<void(const std::string&)>& atLine);
