// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <vector>

#include "preview.h"

/// Makes the previews of several images, some of them side by side, with a progress bar.
///
/// @return in the order of the images
std::vector<Preview> MakePreviews(const std::vector<std::filesystem::path>& images, const PreviewRequest& request,
                                  unsigned jobs);
