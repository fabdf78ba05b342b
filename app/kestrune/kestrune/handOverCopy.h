// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string_view>

/// Protects the hand-over file from power cuts: while an upgrade is pending, mode "1" keeps a copy of it in "/config",
/// and mode "2" uses the copy if the file in "/tmp" is lost.

/// Called before the passes. Mode "2" restores a missing hand-over file from its copy.
///
/// Reads:     /tmp/VersionInfo.cfg, /config/kestrune-handover
/// Writes:    /tmp/VersionInfo.cfg
/// Failures:  without a readable copy, nothing happens
void BringBackHandOver(std::string_view mode);

/// Called after the passes. Mode "1" copies the hand-over file if this run has written it, and otherwise removes the
/// copy of an earlier upgrade; mode "2" removes the copy.
///
/// Reads:     /tmp/VersionInfo.cfg
/// Writes:    /config/kestrune-handover
/// Failures:  ignored
void KeepHandOver(std::string_view mode);
