// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string_view>

/// The hand-over file past a power cut: while an upgrade is pending, mode "1" keeps a copy of it in "/config", and mode "2"
/// takes it from there when "/tmp" has lost it.

/// Before the passes. Mode "2" brings a missing hand-over file back from its copy.
///
/// Reads:     /tmp/VersionInfo.cfg, /config/kestrune-handover
/// Writes:    /tmp/VersionInfo.cfg
/// Failures:  no copy, or one that cannot be read: nothing happens
void BringBackHandOver(std::string_view mode);

/// After the passes. Mode "1" copies the hand-over file that it has made, or removes the copy of an earlier upgrade when it
/// has made none; mode "2" removes the copy.
///
/// Reads:     /tmp/VersionInfo.cfg
/// Writes:    /config/kestrune-handover
/// Failures:  go unnoticed
void KeepHandOver(std::string_view mode);
