// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// Whole-file integer access: each call opens, reads or changes, and closes the file. The profile and the registry pair
/// are equivalent; the device has both.

/// @return the value as `ParseInt32` reads it; the default if the file, section or key is absent or the file does not
///         load. Creates no file.
int etlGetProfileInt(const char* path, const char* section, const char* key, int defaultValue);
int etlGetRegistryInt(const char* path, const char* section, const char* key, int defaultValue);

/// Writes at once, as `iniFile` saves; creates the file, section and key if absent. A file that exists but does not
/// load is not changed. Failures are not reported.
void etlSetProfileInt(const char* path, const char* section, const char* key, int value);
void etlSetRegistryInt(const char* path, const char* section, const char* key, int value);
