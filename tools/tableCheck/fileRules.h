// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "finding.h"

class TiXmlDocument;
class TiXmlElement;

/// Says why the program's loader did not take the table.
///
/// @param document   as `LoadXmlFile` has left it
/// @param errorDesc  what `LoadXmlFile` said
Finding ExplainLoadFailure(const TiXmlDocument& document, const std::string& path, const std::string& errorDesc);

/// Rules about the file as a whole: no record, text between records, elements after the root.
void CheckFile(const TiXmlDocument& table, Findings& findings);

/// Rules about what is in a record next to its attributes.
void CheckRecordContent(const TiXmlElement& record, Findings& findings);
