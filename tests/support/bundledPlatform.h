// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <gtest/gtest.h>
#include <string>

#include "passwordCipher.h"

/// Whether the program is built with the bundled platform library. A test that rests on one of that library's choices is
/// skipped with any other one and says why.
constexpr bool kHasBundledPlatform = KESTRUNE_HAS_BUNDLED_PLATFORM != 0;

/// What the platform's cipher makes of a text.
///
/// @param bundledText  what the bundled one has to make of it; of any other one it is taken as it comes
inline std::string Enciphered(const char* text, const char* bundledText)
{
    if (kHasBundledPlatform)
        return bundledText;
    char output[kPasswordBufferSize] = {};
    EXPECT_EQ(pw_data_encrypt(text, output), 0) << text;
    return output;
}
