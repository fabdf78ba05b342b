// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include "finding.h"

class TiXmlDocument;
class TiXmlNode;

/// Removes what the comments right before the record suppress, as in
/// "<!-- kestrune-table-check: ignore KT010 KT011 (the reason) -->", and adds what is suppressed without effect.
///
/// @param record    an element of the table
/// @param findings  those of the record
void ApplySuppressions(const TiXmlNode& record, Findings& findings);

/// Finds the comments that were meant to suppress something and do not.
void CheckSuppressions(const TiXmlDocument& table, Findings& findings);
