// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

#include "temporaryFile.h"

/// Changes of the device that take effect at once, one file each; all of this is past the stage.

/// Replaces one file in the five steps that fileReplacement.h lists.
///
/// @param path  no link that is to be followed
/// @return 0; otherwise the error number of the call that failed: the file is as it was, and no temporary file is left
int ReplaceAtOnce(const std::string& path, std::string_view bytes, const FileOrigin& origin);

/// Brings the modification time of a file that ends as it began up to date, and removes a temporary file that an earlier
/// run may have left for it. Nothing is lost when either fails.
void Touch(const std::string& path);
