// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <gtest/gtest.h>
#include <string>

#include "iniFile.h"
#include "scratchFolder.h"

/// The chain as a text: each section as "[name]", followed by the values of its keys, all in chain order.
inline std::string Walk(iniFile& file)
{
    std::string seen;
    pointer_chain_pNext* sections = file.objects();
    for (auto* node = sections->get_pNext(); node != sections; node = node->get_pNext()) {
        auto* section = static_cast<iniSection*>(node);
        seen += std::to_string(section->type()) + ":";
        pointer_chain_pNext* keys = section->objects();
        for (auto* keyNode = keys->get_pNext(); keyNode != keys; keyNode = keyNode->get_pNext()) {
            auto* key = static_cast<iniKey*>(keyNode);
            seen += std::to_string(key->type()) + "(" + key->GetValue("default") + ")";
        }
    }
    return seen;
}

/// A document, and a file for it in a separate folder.
class IniFileFixture : public testing::Test
{
protected:
    void Load(const std::string& bytes)
    {
        WriteBytes(path_, bytes);
        ASSERT_NE(file_.LoadFromFile(path_.c_str()), 0);
    }

    std::string Saved()
    {
        EXPECT_NE(file_.SaveToFile(/*path=*/nullptr), 0);
        return ReadBytes(path_);
    }

    void ExpectEmpty()
    {
        EXPECT_EQ(Walk(file_), "");
        EXPECT_EQ(file_.GetTextValue("S", "k", "default"), "default");
    }

    ScratchFolder folder_;
    std::string path_ = folder_.Path("user.ini");
    iniFile file_;
};
