// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "finding.h"
#include "process.h"
#include "rules.h"

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

/// A phone whose lock is on, with a list of enciphered entries.
std::string TestPhone();

/// Copies it without its cipher key into a folder.
void PutKeylessPhone(const std::string& folder);

/// @param kind  "fires" or "silent"
std::string TablePath(const Rule& rule, const std::string& kind);

/// Checks a table's file against an image; an empty path is no image.
Findings Check(const std::string& table, const std::string& image = TestPhone());

/// Checks a table given as text.
std::string SummaryOf(const std::string& text, const std::string& image = "");

/// @return a table whose only record, at line 2, has user.ini for its source
std::string Record(const std::string& attributes);
