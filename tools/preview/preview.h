// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "firmware.h"
#include "secrets/secrets.h"
#include "shown/shownPreview.h"
#include "steps/stepsClient.h"

struct PreviewRequest {
    std::vector<std::string> modes;
    PreviewPrograms programs;
    Secrecy secrecy = Secrecy::Hidden;
    const Firmware* firmware = nullptr; ///< what the upgrade brings; null for each image's own
    std::filesystem::path savedPhone;   ///< folder to make with the phone as it is after the run; empty for none
};

/// Runs the modes, one after another, on a copy of the image, and finds what they changed. Does not throw:
/// when it fails, the preview's `error` says why.
Preview MakePreview(const std::filesystem::path& image, const PreviewRequest& request);

/// Runs the modes on two copies of the image, one with the request's firmware and one with another, and finds how the phones
/// and the warnings differ: "before" is the phone after the first run, "after" that after the second. Does not throw.
Preview MakeDifference(const std::filesystem::path& image, const PreviewRequest& request, const Firmware& second);
