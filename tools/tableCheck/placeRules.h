// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include "finding.h"

struct TableRecord;

/// Rules about one record's source and destination: files, sections and keys that are missing or cannot be.
void CheckPlaces(const TableRecord& record, Findings& findings);
