// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// Inputs of the benchmarks. All names and numbers in them are invented, and the same in every run.

struct KeyName {
    std::string section;
    std::string key;
};

struct IniInput {
    std::string text;
    std::vector<KeyName> keys; ///< in file order
};

/// A configuration file like those of a phone: sections of a dozen keys. No comments, since the libraries have no
/// comment character in common.
///
/// @param size  minimum length of the text in bytes, which is exceeded by at most one section
IniInput MakeIni(std::size_t size, const std::string& lineEnd);

/// Contacts in groups, in the old form.
std::string MakeContacts(int count);
