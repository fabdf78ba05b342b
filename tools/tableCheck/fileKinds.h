// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string_view>

/// @return true for a path that ends as files do that are no configuration files, such as ".xml" or ".pem", in any letter
///         case
bool HasForeignEnding(std::string_view path);

/// @return true for the bytes of an XML, PEM or binary file
bool HasForeignContent(std::string_view bytes);
