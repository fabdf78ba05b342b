// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "phraseConstTextA.h"

/// Section handle: one section of one configuration file, through which keys are read and changed. The name is the
/// device's own spelling.
struct _HREGISTRY_;

/// Opens a section. A file or section that does not exist yet is no failure; the flush makes it.
///
/// @return handle, owned by the platform and released by `registryFlush` or else at exit; null for a null or empty path
///         or section, and when the path exists but cannot be read as a file
_HREGISTRY_* registryOpen(const char* path, const char* section);

/// @return the value as `ParseInt32` reads it, the handle's own pending changes included; the default when the key is
///         absent or the handle is null
int registryGetInt(_HREGISTRY_* handle, const char* key, int defaultValue);

/// Holds a change until the flush. Nothing happens with a null handle and for what `iniDocument::SetTextValue` refuses.
void registrySetInt(_HREGISTRY_* handle, const char* key, int value);
void registrySetString(_HREGISTRY_* handle, const char* key, const phraseConstTextA& text);

/// Reads the file afresh, applies the pending changes to it, saves it as `iniFile` does, and releases the handle.
/// Without changes nothing is saved; a file that is there but does not load any more is left alone. Failures go
/// unreported. A null handle: nothing happens.
void registryFlush(_HREGISTRY_* handle);

namespace ETL_SubClass
{

/// @return the text, the handle's own pending changes included; the default when the key is absent or the handle is
///         null
std::string registryGetString(_HREGISTRY_* handle, const char* key, const phraseConstTextA& defaultText);

} // namespace ETL_SubClass
