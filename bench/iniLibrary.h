// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// The operations that the benchmarks require of an INI library, each from scratch. Every file in libraries/ implements
/// them with one library, as the library's documentation shows, and is linked into programs of its own.
namespace iniLibrary
{

/// Loads the file and gets the value of one key.
std::string Get(const char* path, const char* section, const char* key);

/// Whether the library can write; if not, the functions below do nothing.
extern const bool kCanWrite;

/// Loads the file, sets a key, and saves to memory.
///
/// @return the whole text; empty if the library can save only to files, and has saved to this file
std::string SetInMemory(const char* path, const char* section, const char* key, const char* value);

/// Loads the file, sets a key, saves the file, and flushes it to the device: at once, or with all others in
/// `CommitRun`.
void SetInFile(const char* path, const char* section, const char* key, const char* value);

/// Commits all changes from here to `CommitRun` together. Does nothing for a library without such an operation.
void BeginRun();
void CommitRun();

} // namespace iniLibrary
