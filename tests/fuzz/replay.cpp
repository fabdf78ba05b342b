// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sys/resource.h>
#include <unistd.h>

#include "fuzzInput.h"
#include "scratchFolder.h"

namespace
{

/// Limits the address space to 64 MiB more than at the start of the program: an input that would use up the memory of a
/// phone ends the process. Sanitizers need terabytes, so with them there is no limit.
bool LimitAddressSpace()
{
#ifndef __SANITIZE_ADDRESS__
    rlim_t pages = 0;
    if (!(std::ifstream("/proc/self/statm") >> pages))
        return false;
    const rlim_t size = pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + (rlim_t{64} << 20);
    const rlimit limit = {size, size};
    return setrlimit(RLIMIT_AS, &limit) == 0;
#else
    return true;
#endif
}

} // namespace

/// Runs the harness on every file of the named folders; a property that does not hold aborts the process.
int main(int argumentCount, char** arguments)
{
    if (!LimitAddressSpace())
        return 1;
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
