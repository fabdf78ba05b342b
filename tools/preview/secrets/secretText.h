// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "secretPlaces.h"

/// Where a secret is in a text.
struct SecretSpan {
    std::size_t begin;
    std::size_t end;
    bool isGuess = false; ///< may be a word of a sentence: "password hunter"
};

/// Finds the secrets that a text itself says to be some: the value after a secret name and "=" or ":", the text of an
/// element with a secret name, and private keys, on several lines or on one.
///
/// @return in the order of the text, without overlaps
std::vector<SecretSpan> FindSecretSpans(std::string_view text);

/// The same for a whole file of any format, and besides: the values of secret places on lines such as "key=value", and the
/// last word of a line after a secret name, as a guess.
std::vector<SecretSpan> FindFileSecretSpans(std::string_view content, const SecretPlaces& places);

/// @return the parts of a text that have the form of an enciphered value: 23 to 159 letters and digits of base64
std::vector<std::string_view> FindCipherTexts(std::string_view text);
