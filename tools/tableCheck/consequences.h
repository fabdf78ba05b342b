// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include "finding.h"

/// Drops findings that only follow from another one: one mistake is one finding.
///
/// @param findings  those of one record
void DropConsequences(Findings& findings);
