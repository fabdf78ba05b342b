// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "secrets/secrets.h"
#include "shown/shownPreview.h"

/// The programs that a preview starts.
struct PreviewPrograms {
    std::filesystem::path program; ///< the unmodified one
    std::filesystem::path steps;   ///< kestrune-preview-steps
};

struct PreviewRequest {
    std::vector<std::string> modes;
    PreviewPrograms programs;
    Secrecy secrecy = Secrecy::Hidden;
    std::filesystem::path savedPhone; ///< folder to make with the phone as it is after the run; empty for none
};

/// Runs the modes, one after another, on a copy of the image, and tells what they changed. Never throws: an image of
/// which there is no preview gives one with an error.
Preview MakePreview(const std::filesystem::path& image, const PreviewRequest& request);
