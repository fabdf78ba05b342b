// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// Start-up fix-up: gives every existing account file an explicit "SCALineKeyNumber", which older configurations leave
/// out.
///
/// Reads:     /config/user/voip/sipAccount16.cfg down to sipAccount0.cfg
/// Writes:    the same files, if the key is absent or -1 ([account] SCALineKeyNumber=-1)
/// Result:    none
/// Failures:  a missing account file is skipped and never created; a failed write is ignored
/// Twice:     a second run changes nothing
void SetDefaultSCALineKeyNumber();

/// Start-up fix-up: initialises the global ring-back time-out from that of the first account.
///
/// Reads:     /config/user/user.ini, /config/user/voip/sipAccount0.cfg ([account] CancelTimer; 180 if absent)
/// Writes:    /config/user/user.ini ([Feature] RingbackTimeout), if the key is absent or -1
/// Result:    none
/// Failures:  a failed write is ignored
/// Twice:     a second run changes nothing
void InitRingbackTimeout();
