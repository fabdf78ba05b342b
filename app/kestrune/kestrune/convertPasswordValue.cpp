// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "convertPasswordValue.h"

#include <cstdio>

#include "passReports.h"
#include "passwordCipher.h"
#include "standardOutput.h"

namespace
{

bool IsSevenBit(const char* text)
{
    for (; *text != '\0'; ++text) {
        if (static_cast<unsigned char>(*text) >= 0x80)
            return false;
    }
    return true;
}

void PrintBuffer(const char* buffer, int result)
{
    std::fprintf(StandardOutput(), kCipherReport, buffer, result);
}

void Encipher(const std::string& input, std::string& output)
{
    char lpOutPassword[kPasswordBufferSize] = {};
    if (pw_data_decrypt(input.c_str(), lpOutPassword) == 0 && IsSevenBit(lpOutPassword)) {
        // Already enciphered. Only the printed buffer may be truncated, not the value.
        std::snprintf(lpOutPassword, sizeof lpOutPassword, "%s", input.c_str());
        PrintBuffer(lpOutPassword, 0);
        output = input;
        return;
    }
    // The second call reuses the buffer uncleared, and its content is the result even when the cipher reports a
    // failure.
    (void)pw_data_encrypt(input.c_str(), lpOutPassword);
    PrintBuffer(lpOutPassword, 0);
    output = lpOutPassword;
}

void Decipher(const std::string& input, std::string& output)
{
    char lpOutPassword[kPasswordBufferSize] = {};
    const bool isDeciphered = pw_data_decrypt(input.c_str(), lpOutPassword) == 0 && IsSevenBit(lpOutPassword);
    PrintBuffer(lpOutPassword, isDeciphered ? 0 : -1);
    output = isDeciphered ? lpOutPassword : input;
}

} // namespace

void ConvertPasswordValue(const std::string* input, std::string& output, bool wantEnciphered)
{
    if (input == nullptr)
        return;
    if (wantEnciphered)
        Encipher(*input, output);
    else
        Decipher(*input, output);
    if (input->find('\0') != std::string::npos)
        output = *input; // the cipher saw only its beginning; the file refuses a zero byte, so nothing is lost
}
