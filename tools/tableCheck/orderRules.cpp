// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "orderRules.h"

namespace
{

std::string RecordAt(int line)
{
    return "the record at line " + std::to_string(line);
}

} // namespace

void OrderRules::Check(const TableRecord& record, Findings& findings)
{
    const Place& to = record.destination;
    if (!record.IsInPlace()) {
        if (const auto writer = writers_.find(to); writer != writers_.end())
            findings.push_back(
                {"KT010", record.Line(),
                 Describe(to) + " has been written by " + RecordAt(writer->second) + " and is overwritten"});
        if (const auto reader = readers_.find(to); reader != readers_.end())
            findings.push_back({"KT012", record.Line(),
                                Describe(to) + " is overwritten, but " + RecordAt(reader->second) +
                                    " reads it: a second run carries the new value on"});
    }
    if (record.source) {
        if (const auto mover = movers_.find(*record.source); mover != movers_.end())
            findings.push_back({"KT011", record.Line(),
                                Describe(*record.source) + " now has the value that " + RecordAt(mover->second) +
                                    " has written: this value is moved on"});
    }
    writers_.insert_or_assign(to, record.Line());
    if (record.IsInPlace())
        return;
    movers_.insert_or_assign(to, record.Line());
    if (record.source)
        readers_.insert_or_assign(*record.source, record.Line());
}
