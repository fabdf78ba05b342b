// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Runs one operation on the device's fixed paths and prints its result: tests start this program in the sandbox in
// place of the real one. No mode calls the operation, or none examines its result. The result is followed by the paths
// that tracked allocations were given.

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>
#include <unistd.h>

#include "allV4XToV50.h"
#include "migrateVersionSettings.h"
#include "standardOutput.h"
#include "trackedNew.h"
#include "transPasswordFile.h"
#include "translateConfigTable.h"

namespace
{

std::string g_allocations;

struct Operation {
    const char* name;
    int (*run)();
};

int RunBacklightMinutesToSecondsIfSmall()
{
    BacklightMinutesToSecondsIfSmall();
    return 0; // it has no result
}

const Operation kOperations[] = {
    {"AllV4XToV50", &AllV4XToV50},
    {"BacklightMinutesToSecondsIfSmall", &RunBacklightMinutesToSecondsIfSmall},
    {"TranslateConfigTable", &TranslateConfigTable},
    {"TransPasswordFile", &TransPasswordFile},
    {"TransAllEncryptConfig encipher", [] { return TransAllEncryptConfig(CipherDirection::Encipher); }},
    {"TransAllEncryptConfig decipher", [] { return TransAllEncryptConfig(CipherDirection::Decipher); }},
};

/// Executes the program itself with an empty argument list, not even its name.
int StartWithoutArguments()
{
    char* const none[] = {nullptr};
    return execve("/kestrune", none, environ);
}

} // namespace

// They replace those of the platform.
void* operator new(std::size_t size, const char* file, int line) noexcept
{
    g_allocations += std::string("new ") + file + (line > 0 ? "\n" : " without a line\n");
    return ::operator new(size, std::nothrow);
}

void operator delete(void* memory, const char* /*file*/, int /*line*/) noexcept
{
    ::operator delete(memory);
}

int main(int argumentCount, char** arguments)
{
    const std::string_view name = argumentCount == 2 ? arguments[1] : "";
    if (name == "StartWithoutArguments")
        return StartWithoutArguments();
    for (const Operation& operation : kOperations) {
        if (name == operation.name) {
            const int result = operation.run();
            // After the output of the operation itself.
            std::fprintf(StandardOutput(), "result %d\n%s", result, g_allocations.c_str());
            return 0;
        }
    }
    return 1;
}
