// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

/// What the fuzzing harnesses share. Each harness is a libFuzzer entry point; the preset "fuzz" links it to the fuzzer, every
/// other build to a driver that replays the inputs that are kept in the tree.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Ends the process when a property does not hold, so that the fuzzer keeps the input.
inline void Require(bool holds)
{
    if (!holds)
        std::abort();
}

inline std::string InputText(const std::uint8_t* data, std::size_t size)
{
    return std::string(reinterpret_cast<const char*>(data), size);
}

/// Takes the first line, without its line feed, off the text.
std::string TakeLine(std::string& text);

/// A file of this process on a memory file system; its folder goes at exit.
std::string FuzzFile(const std::string& name);
