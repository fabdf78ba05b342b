// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "checkImages.h"
#include "rules.h"

/// How many findings there are of each severity.
struct Tally {
    int errors = 0;
    int warnings = 0;
    int notes = 0;
};

Tally Count(const Findings& findings);

/// @return 2 with an error among the findings or an image that could not be checked, else 1 with a warning, else 0
int ExitStatus(const ImagesResult& result);

/// Drops what is less severe.
void KeepFrom(Severity least, Findings& findings);

/// @param path  the table's, as it was given
/// @return a line "path:line: severity: text [KT000]" for each error and warning, and one for all notes of a rule
std::string TextReport(const std::string& path, const ImagesResult& result);

/// @return one JSON object with every finding (docs/table-check.md)
std::string JsonReport(const std::string& path, const ImagesResult& result);

/// @return the same lines in the form of workflow commands: a code review shows them next to the table
std::string GithubReport(const std::string& path, const ImagesResult& result);
