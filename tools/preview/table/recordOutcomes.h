// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <vector>

#include "steps/phoneStates.h"
#include "steps/runReports.h"

/// What a record of the translation table did. If several apply, the first of these counts: NeverRan, NoSource, WroteEmpty,
/// NothingChanged.
enum class RecordOutcome {
    Moved,          ///< it changed its destination
    NoSource,       ///< a source attribute, its file, section or key is absent: it wrote an empty value
    WroteEmpty,     ///< its source is empty, or the cipher lost the value
    NothingChanged, ///< the destination had the value already, or no file can contain its names or the value
    NeverRan,       ///< no mode has the pass, or the pass ended earlier or here: this destination does not load
};

/// @return such as "wrote empty"
const char* OutcomeWords(RecordOutcome outcome);

/// Compares what the first run of modes "all" or "dev" reported with the phone that each record found: earlier records had
/// written to it.
///
/// @param records  the table's, in its order
/// @param runs     of all modes, in their order
/// @param before   the phone before them; used when `states` is empty. What the passes before the table wrote is then not
///                 known: the start-up fix-ups, and those of an earlier mode
/// @param states   the phone before the first pass and after each
/// @return one for each record. A source that is a link and empty counts as absent
std::vector<RecordOutcome> FindRecordOutcomes(const std::vector<TableRecord>& records,
                                              const std::vector<RunReports>& runs, const Snapshot& before,
                                              const std::vector<PassState>& states);
