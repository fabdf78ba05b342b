// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string_view>

/// Writes to a descriptor whose reader may be stalled: waits at most ten seconds in all calls of the process together,
/// and drops bytes that do not fit after that. Failures are ignored.
void WriteWithinBounds(int descriptor, std::string_view bytes);
