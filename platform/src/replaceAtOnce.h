// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

#include "temporaryFile.h"

/// Changes of the device that take effect at once, one file each, without staging.

/// Replaces one file in the five steps that fileReplacement.h lists.
///
/// @param path  a path whose last name is not followed as a link
/// @return 0; otherwise the error number of the call that failed: the file is unchanged, and no temporary file is left
[[nodiscard]] int ReplaceAtOnce(const std::string& path, std::string_view bytes, const FileOrigin& origin);

/// Sets the modification time of a file that ends unchanged to now, and removes a temporary file that an earlier run
/// may have left for it. Failures of both are harmless.
void Touch(const std::string& path);
