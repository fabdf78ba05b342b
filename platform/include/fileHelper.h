// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

namespace ETL_MiscHelper
{

/// @return non-zero if the path names an existing file of any kind. A link counts as the file that it names; another
///         user's link in a world-writable folder counts as missing. 0 for a null or empty path.
int pathFileExist(const char* path);

} // namespace ETL_MiscHelper

namespace ETL_SubClass
{

/// Copies a whole file over the destination, in one step as `ReplaceFile` does. The destination comes first.
///
/// A missing destination gets the source's permission bits; an existing one keeps its own. If the destination is a link
/// to its own source, the copy replaces the link, so that removing the source loses nothing.
///
/// @return non-zero if the destination contains the source's bytes, or will after the commit of a run; on 0 the
///         destination is unchanged
[[nodiscard]] int etlCopyFile(const char* destinationPath, const char* sourcePath);

} // namespace ETL_SubClass
