// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "generatedInput.h"

/// One record of a translation table: a key of one file goes to a key of another, which is saved durably.
struct Record {
    std::string source;
    std::string destination;
    KeyName key;
    std::string value; ///< that the destination gets: of the same length in every record, longer than the one before
};

enum class Pass {
    First,  ///< every record changes its destination
    Second, ///< nothing changes
};

/// Does the records, one after the other, each from nothing. records.cpp does it with the INI library that it is linked to; the
/// floor's own implementation repeats the system calls that were recorded when kestrune did it.
///
/// @param name  of the benchmark; that of one run takes all records together
void DoRecords(const std::string& name, Pass pass, const std::vector<Record>& records);

/// Whether this program can do records at all.
bool CanDoRecords();
