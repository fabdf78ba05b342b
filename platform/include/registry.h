// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "phraseConstTextA.h"

/// Section handle: one section of one configuration file, with operations that read and change its keys. The name is
/// the device's own spelling.
struct _HREGISTRY_;

/// Opens a section. A file or section that does not exist yet is not an error; the flush creates it.
///
/// @return handle, owned by the platform and released by `registryFlush` or else at exit; null for a null or empty path
///         or section, and if the path exists but cannot be read as a file
_HREGISTRY_* registryOpen(const char* path, const char* section);

/// @return the value as `ParseInt32` reads it, including the handle's own pending changes; the default if the key is
///         absent or the handle is null
int registryGetInt(_HREGISTRY_* handle, const char* key, int defaultValue);

/// Keeps a change until the flush. Ignores a null handle and texts that `iniDocument::SetTextValue` refuses.
void registrySetInt(_HREGISTRY_* handle, const char* key, int value);
void registrySetString(_HREGISTRY_* handle, const char* key, const phraseConstTextA& text);

/// Reads the file again, applies the pending changes to it, saves it as `iniFile` does, and releases the handle.
/// Without changes nothing is saved; a file that exists but no longer loads is not changed. Failures are not reported.
/// Ignores a null handle.
void registryFlush(_HREGISTRY_* handle);

namespace ETL_SubClass
{

/// @return the text, including the handle's own pending changes; the default if the key is absent or the handle is null
std::string registryGetString(_HREGISTRY_* handle, const char* key, const phraseConstTextA& defaultText);

} // namespace ETL_SubClass
