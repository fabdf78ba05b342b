// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "finding.h"
#include "process.h"

/// Runs the tool itself in its folder of test files, so that tables are named by short paths.
ProcessResult RunTableCheck(const std::vector<std::string>& arguments);

/// The same without root's right to read any file, in case root runs the tests.
ProcessResult RunTableCheckWithoutPrivileges(const std::vector<std::string>& arguments);

/// @return the folder that holds the tool
std::string TableCheckFolder();

/// @return "KT004 at 3, KT007 at 5", or "nothing"
std::string Summary(const Findings& findings);

/// @return a path of this project's sources
std::string SourcePath(const std::string& path);
