// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "preview.h"

/// What the command line asks for.
struct Options {
    std::vector<std::filesystem::path> images;
    PreviewRequest request;
    bool withReports = false;
    bool withColour = false;
    unsigned jobs = 1;
    std::filesystem::path jsonFile; ///< "-" for standard output; empty for none, as for the other two
    std::filesystem::path htmlFile;
    std::filesystem::path expectedFile;
};

enum class OptionsResult { Run, Done, Wrong };

/// Reads the command line. Help and faults are told at once.
///
/// @return `Done` when there is nothing more to do (help), `Wrong` for a fault
OptionsResult ReadOptions(int argumentCount, const char* const* arguments, Options& options);
