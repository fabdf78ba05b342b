// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>

/// The nearest value of the signed 32-bit range. Arithmetic on numbers from files is done in 64 bits and converted back
/// by this function, so that it neither overflows nor differs between machines.
std::int32_t ClampToInt32(std::int64_t value);

/// Reads a number as `strtol` does in base 10: leading white space and one sign are accepted, the first character that
/// is not a digit ends it, no digits give 0. The result is clamped to the signed 32-bit range on every machine,
/// whatever the width of its `long`.
///
/// @param text  zero-terminated, not null
std::int32_t ParseInt32(const char* text);
