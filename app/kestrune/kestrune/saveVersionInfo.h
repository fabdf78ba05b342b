// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

struct _HREGISTRY_;

/// Factory sync by version, mode "1": saves the LED and system-log settings in their old form for a later run of mode
/// "2".
///
/// Reads:     /config/user/user.ini ([Features]), /config/system/system.ini ([Syslog])
/// Writes:    /tmp/VersionInfo.cfg (the hand-over file: the same sections and keys)
/// Result:    none
/// Failures:  a missing source file or key gives an empty value; a source or hand-over file that cannot be read is not
///            changed
/// Twice:     a second run writes the same keys again; other keys in the hand-over file stay
void SaveVersionInfo();

/// Copies the text of one key from one open section to another, under the same name; an absent key becomes an empty
/// one. Does nothing if a handle or the key is null.
void CopyRegistryText(_HREGISTRY_* source, _HREGISTRY_* target, const char* key);
