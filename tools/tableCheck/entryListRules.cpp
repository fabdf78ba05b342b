// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "entryListRules.h"

void CheckEntryList(const TableRecord& record, const EntryList& list, Findings& findings)
{
    const bool isListed = list.converted.count(record.destination) != 0;
    if (isListed && !record.isEnciphered)
        findings.push_back(
            {"KT013", record.Line(),
             Describe(record.destination) + " is kept enciphered, but the encrypt flag is off: it is written plain"});
    if (!isListed && record.isEnciphered)
        findings.push_back({"KT014", record.Line(),
                            Describe(record.destination) +
                                " is not an active entry of the list, but the encrypt flag is on: the password pass "
                                "never converts it"});
}
