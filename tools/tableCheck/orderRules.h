// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <map>

#include "finding.h"
#include "tableRecord.h"

/// Rules about what records do to each other. Takes the records in the table's order.
class OrderRules
{
public:
    void Check(const TableRecord& record, Findings& findings);

private:
    using Lines = std::map<Place, int>;

    Lines writers_; ///< of each place, the last
    Lines movers_;  ///< those of the writers that bring another place's value
    Lines readers_; ///< the last that carries the value to another place
};
