// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>

/// The trees of a phone that an image holds.
constexpr const char* kPhoneTrees[] = {"config", "phone", "tmp"};

/// What a backup of a phone may have at most; one without end would fill our disk or memory.
constexpr std::size_t kMostFileBytes = 64 << 20;
constexpr std::uint64_t kMostImageBytes = 512 << 20;
constexpr std::size_t kMostEntries = 100'000;
