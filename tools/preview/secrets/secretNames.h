// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string_view>

/// Whether the name of a key, attribute or element says that its value is a secret: a password, secret, PIN, token or
/// key, in the spellings that phones have ("strPwd", "UnlockPIN", "wifi_psk", "ApiKey").
bool IsSecretName(std::string_view name);

/// The same for a name with its value: a switch ("bMenuPassword=1") tells whether there is a secret, and is none.
bool IsSecretValue(std::string_view name, std::string_view value);
