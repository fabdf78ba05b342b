// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// Whether the old XML data files are to be translated.
///
/// Reads:  /config/version.ini ([SyncConfig] bEnableFromOld; absent counts as enabled)
bool IsEnableFromOld();

/// Called when a pass has ended, with its name. What the pass has changed is in its files by then. Passes nest: the pass
/// "XML data" ends after those that it consists of.
using PassEnd = void (*)(const char* pass);

/// Runs the passes of the mode that the first argument names, one after another in their fixed order.
///
/// | mode      | passes                                                                                            |
/// | --------- | ------------------------------------------------------------------------------------------------- |
/// | all       | start-up fix-ups; translation table; if enabled, the six XML translations; certificates; passwords |
/// | dev       | start-up fix-ups; translation table; if enabled, the six XML translations; certificates            |
/// | pwd       | start-up fix-ups; passwords                                                                       |
/// | 1         | start-up fix-ups; factory sync by version, under its condition; direct-IP account extraction      |
/// | 2         | start-up fix-ups; mode 2 migration; direct-IP account restore                                     |
/// | any other | start-up fix-ups                                                                                  |
/// | none      | the usage line goes to the application log; no pass runs                                          |
///
/// A pass that fails, or meets an exception, ends by itself; the next one runs. All that they change reaches the device as
/// one step (runCommit.h), which may also find that this mode has nothing to do.
///
/// @param passEnd  called after each pass, for programs that watch a run; null in the program itself. Must not throw. With
///                 it each change is made at once, so that the files show it, and no other run is looked for.
/// @return 0 in every case: the program's exit status
int RunSequence(int argumentCount, const char* const* arguments, PassEnd passEnd = nullptr);
