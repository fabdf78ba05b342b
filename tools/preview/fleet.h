// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <vector>

#include "preview.h"

/// Makes the previews of several images, with a progress bar.
///
/// @param jobs  how many images are processed in parallel, from 1
/// @return in the order of the images
std::vector<Preview> MakePreviews(const std::vector<std::filesystem::path>& images, const PreviewRequest& request,
                                  unsigned jobs);
