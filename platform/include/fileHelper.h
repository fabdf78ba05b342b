// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

namespace ETL_MiscHelper
{

/// @return non-zero when the path names an existing file of any kind. A link counts as what it names; another user's
///         link in a sticky folder that everyone may write to counts as missing. 0 for a null or empty path.
int pathFileExist(const char* path);

} // namespace ETL_MiscHelper

namespace ETL_SubClass
{

/// Copies a whole file over the destination, in one step as `ReplaceFile` does. The destination comes first.
///
/// A destination that was missing gets the source's permission bits; an existing one keeps its own. A destination that is
/// a link to its own source gets a file of its own in the link's place, so that removing the source loses nothing.
///
/// @return non-zero when the destination holds the source's bytes, or will hold them after the commit of a run; on 0 the
///         destination is as it was
int etlCopyFile(const char* destinationPath, const char* sourcePath);

} // namespace ETL_SubClass
