// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string_view>

/// What the name of a key, attribute or element says about its value, the least first. A value below several names is
/// what the greatest of them says.
enum class NameSays {
    Nothing,
    KindOfSecret,   ///< "eWpaKeyMode": a secret unless the value is a short word, a number or a switch
    SizeOfSecret,   ///< "nPinLength": a secret unless the value is a number or a switch
    SwitchOfSecret, ///< "bMenuPassword": a secret unless the value is a switch
    Secret,         ///< "strPassword": a password, PIN, token, key or the like
};

/// Compares whole words with a list: "strProxyBypass" and "SecretaryName" have no word of a secret. Takes time linear in
/// the size of the name.
NameSays WhatNameSays(std::string_view name);

/// @return whether a value with such a name is a secret
bool IsSecretValue(NameSays name, std::string_view value);
