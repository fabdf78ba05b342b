// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>

/// The device's tracking allocation: `new (file, line) T`. Returns null if there is no memory, and so does the
/// expression. The memory is released by the ordinary `delete`.
///
/// @param size  bytes
/// @param file  folder of the allocating source, for the device's allocation tracker (the bundled platform keeps no
///              record)
/// @param line  line of the allocating source
void* operator new(std::size_t size, const char* file, int line) noexcept;

/// Releases the memory if a constructor throws.
void operator delete(void* memory, const char* file, int line) noexcept;
