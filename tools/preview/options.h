// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "preview.h"

enum class Command {
    Preview,
    Merge, ///< "merge": adds up logs
    Diff,  ///< "diff": compares two upgrades
};

/// What the command line asks for.
struct Options {
    Command command = Command::Preview;
    std::vector<std::string> words; ///< images, folders of images and lists; logs to merge
    PreviewRequest request;
    std::vector<std::filesystem::path> firmware; ///< whose /phone replaces each image's; two for a difference of them
    std::vector<std::filesystem::path> table;    ///< replaces each phone's translation table; likewise
    bool withReports = false;
    bool withColour = false;
    unsigned jobs = 1;                  ///< how many images are processed in parallel, from 1
    std::filesystem::path jsonFile;     ///< "-" for standard output, empty for none
    std::filesystem::path htmlFile;     ///< likewise
    std::filesystem::path expectedFile; ///< JSON of an approved preview, empty for none
    std::filesystem::path log;          ///< gets a line for each phone, empty for none
    std::filesystem::path pages;        ///< folder for the page of each phone, empty for none
};

enum class OptionsResult {
    Run,
    Done,  ///< help or the version was asked for, and written
    Wrong, ///< the command line has an error, which was reported
};

/// Reads the command line.
OptionsResult ReadOptions(int argumentCount, const char* const* arguments, Options& options);
