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
    std::filesystem::path firmware; ///< folder or archive whose /phone replaces each image's; empty for none
    std::filesystem::path table;    ///< replaces each phone's translation table; empty for none
    bool withReports = false;
    bool withColour = false;
    unsigned jobs = 1;                  ///< how many images are processed in parallel, from 1
    std::filesystem::path jsonFile;     ///< "-" for standard output, empty for none
    std::filesystem::path htmlFile;     ///< likewise
    std::filesystem::path expectedFile; ///< JSON of an approved preview, empty for none
};

enum class OptionsResult {
    Run,
    Done,  ///< help or the version was asked for, and written
    Wrong, ///< the command line has an error, which was reported
};

/// Reads the command line.
OptionsResult ReadOptions(int argumentCount, const char* const* arguments, Options& options);
