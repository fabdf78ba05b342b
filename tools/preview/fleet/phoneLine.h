// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "shown/shownPreview.h"

/// A letter for each RecordOutcome, in its order.
constexpr char kOutcomeLetters[] = "mnes-";

/// Makes the line of one phone for a fleet's log: what the report of the fleet counts, without what only a page of the phone
/// shows. A new or removed file is one change; so are all records of one kind in an XML file. docs/preview.md describes it.
///
/// @param image    the name that was given, printable
/// @param preview  a preview or the difference of two
nlohmann::json PhoneLine(const std::string& image, const Preview& preview);

/// @return the records of the phone's table, which many phones share: the line names them by number
nlohmann::json TableOf(const Preview& preview);
