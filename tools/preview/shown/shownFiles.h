// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <vector>

#include "changes/fileChanges.h"
#include "secrets/secrets.h"
#include "shownPreview.h"

/// Makes changes fit to be shown: secrets hidden, texts printable, and each new or removed record of an XML file one change.
std::vector<ShownFile> ShowFiles(const std::vector<FileChange>& changes, Secrets& secrets);
