// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

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
