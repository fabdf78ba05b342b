// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "shown/shownPreview.h"

/// The previews as one page without outside references, for screens of any width and for paper: the summary, a chart of
/// changes by pass and by file, the warnings, then the changes.
std::string HtmlPage(const std::vector<Preview>& previews, bool withReports);
