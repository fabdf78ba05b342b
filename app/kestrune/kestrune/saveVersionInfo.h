// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

struct _HREGISTRY_;

/// Factory sync by version, mode "1": saves the LED and system-log settings in their old form for mode "2" of a later
/// run.
///
/// Reads:     /config/user/user.ini ([Features]), /config/system/system.ini ([Syslog])
/// Writes:    /tmp/VersionInfo.cfg (the hand-over file: the same sections and keys)
/// Result:    none
/// Failures:  a missing source file or key gives an empty value; a source or hand-over file that cannot be read is left
///            alone
/// Twice:     a second run writes the same keys again; other keys in the hand-over file stay
void SaveVersionInfo();

/// Copies one key's text under its own name from one open section to another; an absent key becomes an empty one.
/// Nothing happens when a handle or the key is null.
void CopyRegistryText(_HREGISTRY_* source, _HREGISTRY_* target, const char* key);
