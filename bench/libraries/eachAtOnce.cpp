// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// For libraries that save one file at a time.

#include "iniLibrary.h"

void iniLibrary::BeginRun() {}

void iniLibrary::CommitRun() {}
