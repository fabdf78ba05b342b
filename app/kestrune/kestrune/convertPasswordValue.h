// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// Brings a value into enciphered or plain form. The present form is found by trial: a value counts as enciphered when
/// it deciphers to 7-bit text. Every value of the translation table comes through here, secret or not.
///
/// | wanted     | the value               | output                                                        |
/// | ---------- | ----------------------- | ------------------------------------------------------------- |
/// | enciphered | is enciphered, or empty | the value                                                     |
/// | enciphered | is plain                | what the cipher makes of it; the value itself when it refuses; |
/// |            |                         | empty when it is too long for the cipher's buffer             |
/// | plain      | is enciphered           | the deciphered text                                           |
/// | plain      | is plain                | the value                                                     |
///
/// Prints one line, with the cipher's buffer, to standard output.
///
/// @param input           null: nothing happens
/// @param output          gets the result; not `input`
/// @param wantEnciphered  the form to bring it into
void ConvertPasswordValue(const std::string* input, std::string& output, bool wantEnciphered);
