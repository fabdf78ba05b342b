// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The program's version as an ELF note, since the program has no option that prints it. `readelf -n` prints the note,
// and stripping keeps it.

#include <cstdint>

namespace
{

/// The layout that ELF defines: both texts with their final zero, each padded to four bytes.
struct VersionNote {
    std::uint32_t nameSize;
    std::uint32_t versionSize;
    std::uint32_t type;
    alignas(4) char name[sizeof("kestrune")];
    alignas(4) char version[sizeof(KESTRUNE_VERSION)];
};

constexpr std::uint32_t kVersionType = 1;

// Nothing refers to it: "used" makes the compiler keep it, and linkers never drop notes.
[[gnu::used, gnu::section(".note.kestrune")]] alignas(4) constexpr VersionNote kVersionNote = {
    sizeof("kestrune"), sizeof(KESTRUNE_VERSION), kVersionType, "kestrune", KESTRUNE_VERSION,
};

} // namespace
