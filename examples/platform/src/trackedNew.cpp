// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// A separate file, so that a program with its own tracking allocation links without this one.

#include "trackedNew.h"

#include <new>

void* operator new(std::size_t size, const char* /*file*/, int /*line*/) noexcept
{
    return ::operator new(size, std::nothrow);
}

void operator delete(void* memory, const char* /*file*/, int /*line*/) noexcept
{
    ::operator delete(memory);
}
