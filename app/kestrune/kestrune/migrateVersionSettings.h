// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// Mode 2 migration: converts the settings that mode "1" saved in their old form to those that the firmware reads.
///
/// Runs `MigrateBLFLed`, `MigratePowerLed`, `BacklightMinutesToSeconds`, `MigrateKeyLayouts` and `MigrateSyslog`, in
/// this order. Without the hand-over file, none of them runs.
///
/// Reads:     /tmp/VersionInfo.cfg (the hand-over file; never changed or removed)
/// Writes:    /config/user/user.ini, /config/system/system.ini, /config/user/voip/sipAccount0.cfg to sipAccount15.cfg,
///            the key layout files
/// Result:    none
/// Failures:  if a saved value is absent or empty, its target is not changed
/// Twice:     applies every conversion again: the backlight time is multiplied a second time
void MigrateVersionSettings();

/// [BLFLed] BLFLedMode of user.ini, from the saved "BLFLedOffIdle" and "BLfNotifyType".
void MigrateBLFLed();

/// [PowerLed] of user.ini, from the saved "ClosePowerLight", "PowerLedMail" and "PowerLedIdle&Talk". A power light that
/// was switched off also switches off the queue-status light ([CallCenter] bEnableQueueStatusLight) of accounts 0 to
/// 15.
void MigratePowerLed();

/// [Syslog] LogType and SyslogServer of system.ini, from the saved "eLogType" and "strServerName".
void MigrateSyslog();

/// Multiplies [Backlight] nBacklightTime of user.ini by 60, whatever its value; sets it to 60 if it is absent.
void BacklightMinutesToSeconds();

/// The same, but only for values up to 59; greater ones are already in seconds. For other programs of the device: no
/// mode calls it.
void BacklightMinutesToSecondsIfSmall();
