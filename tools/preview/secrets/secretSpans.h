// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "secretPlaces.h"

/// Where a secret stands in a text.
struct SecretSpan {
    std::size_t begin;
    std::size_t end;
};

/// Finds the secrets of a text that is no configuration or XML file that loads: what stands behind a secret name and "=" or
/// ":", between the tags of an element with a secret name, and in a private key. In the order of the text.
std::vector<SecretSpan> FindSecretSpans(std::string_view text);

/// The same for a configuration file; its places count as well, comments as much as settings.
std::vector<SecretSpan> FindIniSecretSpans(std::string_view text, const SecretPlaces& places);
