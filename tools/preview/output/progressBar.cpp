// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "progressBar.h"

#include <cstdint>
#include <iostream>
#include <string>
#include <unistd.h>

namespace
{

constexpr std::size_t kWidth = 40;

} // namespace

ProgressBar::ProgressBar(std::size_t total) : total_(total), isShown_(total > 1 && isatty(STDERR_FILENO) == 1)
{
    Show(0);
}

ProgressBar::~ProgressBar()
{
    if (isShown_)
        std::cerr << "\r\033[K" << std::flush;
}

void ProgressBar::Show(std::size_t done) const
{
    if (!isShown_)
        return;
    const std::size_t filled = done * kWidth / total_;
    std::cerr << "\r[" << std::string(filled, '#') << std::string(kWidth - filled, '.') << "] " << done << "/"
              << total_;
    if (done > 0) {
        const auto passed =
            std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - begin_).count();
        const auto left = static_cast<std::uint64_t>(passed) * (total_ - done) / done;
        std::cerr << " " << left / 60 << " min " << left % 60 << " s left\033[K";
    }
    std::cerr << std::flush;
}
