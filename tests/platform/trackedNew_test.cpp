// The tracking allocation: memory that ordinary `delete` releases, and null when there is none.

#include "trackedNew.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>

TEST(TrackedNew, GivesMemoryThatOrdinaryDeleteReleases)
{
    const auto* text = new ("app/kestrune/xmlTranslator", __LINE__) std::string(1000, 'x');
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->size(), 1000u);
    delete text;
}

TEST(TrackedNew, GivesNullWhenThereIsNoMemory)
{
    EXPECT_EQ(operator new(PTRDIFF_MAX, "app/kestrune/xmlTranslator", __LINE__), nullptr);
}
