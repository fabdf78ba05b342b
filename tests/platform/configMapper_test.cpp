// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The list of enciphered entries, if any, of the machine that runs this test.

#include "configMapper.h"

#include <gtest/gtest.h>

namespace
{

std::vector<std::string> Describe(const std::list<CIniConfigInfo*>& entries)
{
    std::vector<std::string> texts;
    for (const CIniConfigInfo* entry : entries)
        texts.push_back(entry->filePath + " [" + entry->section + "] " + entry->key + "=" + entry->defaultText +
                        (entry->perAccount ? " per account" : "") + (entry->active ? " active" : ""));
    return texts;
}

} // namespace

TEST(ConfigMapper, TheListIsTheSameEachTimeAndMissingWithoutATrace)
{
    CConfigMapper first;
    std::list<CIniConfigInfo*> entries;
    const int result = first.GetAllEncryptConfig(entries);
    if (result == 0) {
        EXPECT_TRUE(entries.empty());
    }
    CConfigMapper second;
    std::list<CIniConfigInfo*> again;
    EXPECT_EQ(second.GetAllEncryptConfig(again) != 0, result != 0);
    EXPECT_EQ(Describe(again), Describe(entries));
}
