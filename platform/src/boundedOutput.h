// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string_view>

/// Writes to a descriptor whose reader may stand still: waits for it, ten seconds in all calls of the process together, and
/// drops what finds no room after that. Failures are nobody's business.
void WriteWithinBounds(int descriptor, std::string_view bytes);
