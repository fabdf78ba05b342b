// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// Whole-file integer access: each call opens, reads or changes, and closes the file by itself. The profile and the
/// registry pair mean the same; the device has both.

/// @return the value as `ParseInt32` reads it; the default when the file, section or key is absent or the file does not
///         load. Makes no file.
int etlGetProfileInt(const char* path, const char* section, const char* key, int defaultValue);
int etlGetRegistryInt(const char* path, const char* section, const char* key, int defaultValue);

/// Writes at once, as `iniFile` saves; makes the file, section and key when absent. A file that is there but does not
/// load is left alone. Failures go unreported.
void etlSetProfileInt(const char* path, const char* section, const char* key, int value);
void etlSetRegistryInt(const char* path, const char* section, const char* key, int value);
