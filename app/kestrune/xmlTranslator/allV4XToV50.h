// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

struct XmlFile; // phoneFacts.h

/// One translation of old XML data: the pass's name, the file that it reads, and the translator called with the phone's
/// own paths.
struct XmlTranslation {
    const char* pass;
    const XmlFile& source;
    int (*translate)();
};

/// All six, in the order in which they run.
extern const XmlTranslation kXmlTranslations[6];

/// Runs all six translators on the device's files. No mode calls it: the driver runs them one by one, under its own
/// condition.
///
/// @return the result of the last one, the remote phone books
int AllV4XToV50();
