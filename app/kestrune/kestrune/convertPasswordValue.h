// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// Converts a value to enciphered or plain form. The present form is found by trial: a value counts as enciphered if it
/// deciphers to 7-bit text. Every value of the translation table is converted by this function, secret or not.
///
/// | wanted     | the value               | output                                                        |
/// | ---------- | ----------------------- | ------------------------------------------------------------- |
/// | enciphered | is enciphered, or empty | the value                                                     |
/// | enciphered | is plain                | the enciphered text; the value itself if the cipher refuses   |
/// |            |                         | it; empty if it does not fit into the cipher's buffer         |
/// | plain      | is enciphered           | the deciphered text                                           |
/// | plain      | is plain                | the value                                                     |
///
/// Prints one line, with the content of the cipher's buffer, to standard output.
///
/// @param input           if null, nothing happens
/// @param output          receives the result; must not be `input`
/// @param wantEnciphered  the form to convert to
void ConvertPasswordValue(const std::string* input, std::string& output, bool wantEnciphered);
