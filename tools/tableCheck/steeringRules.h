// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include "finding.h"

struct TableRecord;

/// Rules about destinations that the program itself reads: a record there changes what a run does.
void CheckSteering(const TableRecord& record, Findings& findings);
