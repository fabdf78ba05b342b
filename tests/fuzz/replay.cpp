// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include <cstdio>
#include <filesystem>
#include <vector>

#include "fuzzInput.h"
#include "scratchFolder.h"

/// Runs the harness on every file of the folders that are named; a property that does not hold ends the process.
int main(int argumentCount, char** arguments)
{
    int inputs = 0;
    for (int i = 1; i < argumentCount; ++i) {
        if (!std::filesystem::is_directory(arguments[i]))
            continue;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(arguments[i])) {
            if (!entry.is_regular_file())
                continue;
            std::printf("%s\n", entry.path().filename().c_str());
            (void)std::fflush(stdout);
            const std::string bytes = ReadBytes(entry.path().string());
            (void)LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
            ++inputs;
        }
    }
    std::fprintf(stderr, "%d inputs replayed\n", inputs);
    return inputs == 0;
}
