// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <chrono>
#include <cstddef>

/// Draws on standard error how many of the images are done, and the time left; nothing when that is no terminal.
class ProgressBar
{
public:
    explicit ProgressBar(std::size_t total);
    ~ProgressBar(); ///< takes the bar away

    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void Show(std::size_t done) const;

private:
    std::size_t total_;
    bool isShown_;
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};
