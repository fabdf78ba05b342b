// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// What the benchmarks ask of an INI library, each time from nothing. Every file in libraries/ does it with one library, in the
/// way that the library's documentation shows; each is linked into programs of its own.
namespace iniLibrary
{

/// Loads the file and gets the value of one key.
std::string Get(const char* path, const char* section, const char* key);

/// Whether the library can write; else the functions below do nothing.
extern const bool kCanWrite;

/// Loads the file, sets a key, and saves to memory.
///
/// @return the whole text; an empty one from a library that saves to files alone, and has saved to this one
std::string SetInMemory(const char* path, const char* section, const char* key, const char* value);

/// Loads the file, sets a key, saves the file, and flushes it to the device: at once, or with all others in `CommitRun`.
void SetInFile(const char* path, const char* section, const char* key, const char* value);

/// Takes all that is set from here to `CommitRun` together. Nothing happens for a library that has no such thing.
void BeginRun();
void CommitRun();

} // namespace iniLibrary
