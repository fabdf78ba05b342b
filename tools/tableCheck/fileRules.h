// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "finding.h"

class TiXmlDocument;

/// Says why the program's loader did not take the table.
///
/// @param document   as `LoadXmlFile` has left it
/// @param errorDesc  what `LoadXmlFile` said
Finding ExplainLoadFailure(const TiXmlDocument& document, const std::string& path, const std::string& errorDesc);

/// Rules about what stands outside the records' attributes: no record, content and elements that nobody reads.
void CheckFile(const TiXmlDocument& table, Findings& findings);
