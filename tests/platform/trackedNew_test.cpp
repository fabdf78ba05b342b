// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The tracking allocation: memory that ordinary `delete` releases, and null if there is none.

#include "trackedNew.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>

/// Read by AddressSanitizer, which otherwise aborts a process that requests too much memory.
extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1";
}

TEST(TrackedNew, GivesMemoryThatOrdinaryDeleteReleases)
{
    const auto* text = new ("app/kestrune/xmlTranslator", __LINE__) std::string(1000, 'x');
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->size(), 1000u);
    delete text;
}

TEST(TrackedNew, GivesNullWhenThereIsNoMemory)
{
    // Half of the address space, on every machine; volatile, or the compiler warns of so large a number.
    const volatile std::size_t moreThanThereIs = SIZE_MAX / 2 + 1;
    EXPECT_EQ(operator new(moreThanThereIs, "app/kestrune/xmlTranslator", __LINE__), nullptr);
}
