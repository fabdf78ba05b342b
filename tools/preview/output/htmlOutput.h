// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

#include "shown/shownPreview.h"

/// The preview as a page: the summary, a chart of changes by pass and by file, the warnings, then the changes.
std::string HtmlPage(const Preview& preview, bool withReports);
