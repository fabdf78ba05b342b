// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "generatedInput.h"

/// One record of a translation table: the value of a key is copied to a key of another file, which is saved durably.
struct Record {
    std::string source;
    std::string destination;
    KeyName key;
    std::string value; ///< new value of the destination: of the same length in every record, longer than the old one
};

enum class Pass {
    First,  ///< every record changes its destination
    Second, ///< nothing changes
};

/// Processes the records, one after the other, each from scratch. records.cpp does it with the INI library that it is
/// linked to; the floor's own implementation repeats the system calls that were recorded when kestrune did it.
///
/// @param name  name of the benchmark; that of one run commits all records together
void DoRecords(const std::string& name, Pass pass, const std::vector<Record>& records);

/// Whether this program can process records at all.
bool CanDoRecords();
