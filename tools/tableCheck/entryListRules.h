// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include "entryList.h"
#include "finding.h"

/// Rules about a record's encrypt flag and the list of entries that the phone keeps enciphered.
void CheckEntryList(const TableRecord& record, const EntryList& list, Findings& findings);
