// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// Mode 2 migration: turns the settings that mode "1" saved in their old form into those that the firmware reads.
///
/// Runs `MigrateBLFLed`, `MigratePowerLed`, `BacklightMinutesToSeconds`, `MigrateKeyLayouts` and `MigrateSyslog`, in
/// this order, and none of them without the hand-over file.
///
/// Reads:     /tmp/VersionInfo.cfg (the hand-over file; never changed or removed)
/// Writes:    /config/user/user.ini, /config/system/system.ini, /config/user/voip/sipAccount0.cfg to sipAccount15.cfg,
///            the key layout files
/// Result:    none
/// Failures:  a saved value that is absent or empty leaves its target as it is
/// Twice:     applies every conversion again: the backlight time is multiplied a second time
void MigrateVersionSettings();

/// [BLFLed] BLFLedMode of user.ini, from the saved "BLFLedOffIdle" and "BLfNotifyType".
void MigrateBLFLed();

/// [PowerLed] of user.ini, from the saved "ClosePowerLight", "PowerLedMail" and "PowerLedIdle&Talk". A power light that
/// was switched off also puts out the queue-status light ([CallCenter] bEnableQueueStatusLight) of accounts 0 to 15.
void MigratePowerLed();

/// [Syslog] LogType and SyslogServer of system.ini, from the saved "eLogType" and "strServerName".
void MigrateSyslog();

/// [Backlight] nBacklightTime of user.ini, times 60, whatever it holds; 60 when it is absent.
void BacklightMinutesToSeconds();

/// The same for values up to 59 alone; greater ones are seconds already. For other programs of the device: no mode
/// calls it.
void BacklightMinutesToSecondsIfSmall();
