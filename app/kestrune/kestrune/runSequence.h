// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// Whether the old XML data files are to be translated.
///
/// Reads:  /config/version.ini ([SyncConfig] bEnableFromOld; absent counts as enabled)
bool IsEnableFromOld();

// Names of passes that tools look for; kXmlTranslations has those of the translators.
constexpr char kTablePass[] = "translation table";
constexpr char kXmlDataPass[] = "XML data";
constexpr char kMode2Pass[] = "mode 2 migration";
constexpr char kDirectIPPass[] = "direct-IP account";

/// Called with the name of a pass after it has ended. Its changes are in the files by then. Passes nest: the pass
/// "XML data" ends after the passes that it contains.
using PassEnd = void (*)(const char* pass);

/// Runs the passes of the mode named by the first argument, in their fixed order.
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
/// A pass that fails or throws an exception ends; the next one still runs. All changes reach the device as one step
/// (runCommit.h), which may also find that this mode has nothing to do.
///
/// @param passEnd  called after each pass, for programs that observe a run; null in the program itself. Must not throw.
///                 If set, each change is made at once, so that the files show it, and other runs are not waited for.
/// @return the program's exit status: always 0
int RunSequence(int argumentCount, const char* const* arguments, PassEnd passEnd = nullptr);
