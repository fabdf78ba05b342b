// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <gtest/gtest.h>
#include <string>

#include "passwordCipher.h"

/// Whether the program is built with the bundled platform library. A test that depends on a choice of that library is
/// skipped with any other one, and reports why.
constexpr bool kHasBundledPlatform = KESTRUNE_HAS_BUNDLED_PLATFORM != 0;

/// The output of the platform's cipher for a text.
///
/// @param bundledText  the expected output of the bundled cipher; the output of any other cipher is accepted
inline std::string Enciphered(const char* text, const char* bundledText)
{
    if (kHasBundledPlatform)
        return bundledText;
    char output[kPasswordBufferSize] = {};
    EXPECT_EQ(pw_data_encrypt(text, output), 0) << text;
    return output;
}
