// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// An arbitrary text to decipher and to encipher.

#include <cstring>
#include <string>

#include "fuzzInput.h"
#include "passwordCipher.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text = InputText(data, size).c_str(); // up to the first zero byte
    char output[kPasswordBufferSize] = {};
    char back[kPasswordBufferSize] = {};

    if (pw_data_decrypt(text.c_str(), output) == 0) {
        Require(pw_data_encrypt(output, back) == 0 && text == back);
    } else {
        Require(output[0] == '\0');
    }
    if (pw_data_encrypt(text.c_str(), output) == 0) {
        Require(pw_data_decrypt(output, back) == 0 && text == back);
    } else {
        Require(text.size() < kPasswordBufferSize ? text == output : output[0] == '\0');
    }
    return 0;
}
