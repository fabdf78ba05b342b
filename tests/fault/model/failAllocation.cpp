// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// A preload library: makes one allocation of the program fail, or all from one on. For tests only. The C++ library's
// operator new calls malloc, so it fails too.
//
// FAIL_ALLOCATION        number of the allocation that fails, counted from the beginning of main(); 0 for none
// FAIL_ALLOCATION_ON     if set, all later ones fail too
// FAIL_ALLOCATION_COUNT  file that receives the number of allocations after main() has returned

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <initializer_list>
#include <unistd.h>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace
{

using Main = int (*)(int, char**, char**);

Main realMain = nullptr;
bool isCounting = false;
bool failsOn = false;
unsigned long failing = 0;
unsigned long count = 0;

/// The loader and the C++ library's emergency memory allocate before main(), so they are never affected.
bool Fails()
{
    if (!isCounting)
        return false;
    ++count;
    if (failing == 0 || count < failing || (count > failing && !failsOn))
        return false;
    errno = ENOMEM;
    return true;
}

void ReportCount(const char* path)
{
    char text[32];
    const int length = std::snprintf(text, sizeof text, "%lu", count);
    const int file = open(path, O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (file == -1 || write(file, text, static_cast<std::size_t>(length)) != length)
        std::abort();
    (void)close(file);
}

int CountingMain(int argumentCount, char** arguments, char** environment)
{
    const char* number = std::getenv("FAIL_ALLOCATION");
    const char* report = std::getenv("FAIL_ALLOCATION_COUNT");
    failing = number == nullptr ? 0 : std::strtoul(number, nullptr, 10);
    failsOn = std::getenv("FAIL_ALLOCATION_ON") != nullptr;
    // The children of the program are not under test, and the program itself must not see these variables.
    for (const char* name : {"LD_PRELOAD", "FAIL_ALLOCATION", "FAIL_ALLOCATION_ON", "FAIL_ALLOCATION_COUNT"})
        (void)unsetenv(name);

    isCounting = true;
    const int result = realMain(argumentCount, arguments, environment);
    isCounting = false;
    if (report != nullptr)
        ReportCount(report);
    return result;
}

} // namespace

extern "C" {

void* malloc(std::size_t size)
{
    return Fails() ? nullptr : __libc_malloc(size);
}

void* calloc(std::size_t number, std::size_t size)
{
    return Fails() ? nullptr : __libc_calloc(number, size);
}

void* realloc(void* memory, std::size_t size)
{
    return Fails() ? nullptr : __libc_realloc(memory, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    return Fails() ? nullptr : __libc_memalign(alignment, size);
}

int posix_memalign(void** memory, std::size_t alignment, std::size_t size)
{
    void* made = Fails() ? nullptr : __libc_memalign(alignment, size);
    if (made == nullptr)
        return ENOMEM;
    *memory = made;
    return 0;
}

int __libc_start_main(Main main, int argumentCount, char** arguments, void (*start)(), void (*end)(),
                      void (*endOfLoader)(), void* stackEnd)
{
    realMain = main;
    const auto next = reinterpret_cast<decltype(&__libc_start_main)>(dlsym(RTLD_NEXT, "__libc_start_main"));
    return next(CountingMain, argumentCount, arguments, start, end, endOfLoader, stackEnd);
}

} // extern "C"
