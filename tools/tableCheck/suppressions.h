// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <set>
#include <string>

#include "finding.h"

class TiXmlDocument;
class TiXmlNode;

/// @param record  an element of the table
/// @return the numbers of the rules that the comments right before the record suppress, as in
///         "<!-- kestrune-table-check: ignore KT010 KT011 -->"
std::set<std::string> SuppressedRules(const TiXmlNode& record);

/// Finds the comments that were meant to suppress something and do not.
void CheckSuppressions(const TiXmlDocument& table, Findings& findings);
