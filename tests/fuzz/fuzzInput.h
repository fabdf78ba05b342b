// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

/// Shared code of the fuzzing harnesses. Each harness is a libFuzzer entry point; the preset "fuzz" links it to the
/// fuzzer, every other build to a driver that replays the inputs that are kept in the tree.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Aborts the process if a property does not hold, so that the fuzzer keeps the input.
inline void Require(bool holds)
{
    if (!holds)
        std::abort();
}

inline std::string InputText(const std::uint8_t* data, std::size_t size)
{
    return std::string(reinterpret_cast<const char*>(data), size);
}

/// Removes the first line from the text, and returns it without its line feed.
std::string TakeLine(std::string& text);

/// A file of this process on a memory file system; its folder is removed at exit.
std::string FuzzFile(const std::string& name);
