// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "finding.h"

/// Finds what a strict XML parser refuses in a table that the program's own, which is lax, has loaded. At most one finding a
/// line: the parser's later messages mostly follow from the first.
void CheckWellFormedness(const std::string& path, Findings& findings);
