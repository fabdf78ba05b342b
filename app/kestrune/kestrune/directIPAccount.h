// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// Direct-IP account, mode "1": takes the account marked [account] directip=1 out of the numbered accounts.
///
/// Reads:     /config/user/voip/sipAccount16.cfg down to sipAccount0.cfg
/// Writes:    /config/user/voip/directip.cfg (a copy of the highest-numbered marked account); removes every marked
///            account file
/// Result:    none
/// Failures:  a marked account file is removed even if its copy failed
/// Twice:     a second run finds no marked account and changes nothing
void ExtractDirectIPAccount();

/// Direct-IP account, mode "2": makes it account 16.
///
/// Reads:     /config/user/voip/directip.cfg, or /phone/factory/user/voip/sipAccount16.cfg if that is missing
/// Writes:    /config/user/voip/sipAccount16.cfg; removes directip.cfg
/// Result:    none
/// Failures:  directip.cfg is removed even if its copy failed; with neither file nothing happens
/// Twice:     a second run finds no directip.cfg, and so replaces the account with the factory's
void RestoreDirectIPAccount();

/// Removes one leading "?" from every value of a configuration file and saves the file, whether changed or not.
///
/// @param path  if null, or if the file is missing, nothing happens
/// @return true if the file was saved
[[nodiscard]] bool StripValueMarks(const char* path);
