// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fleet.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

#include "output/progressBar.h"

std::vector<Preview> MakePreviews(const std::vector<std::filesystem::path>& images, const PreviewRequest& request,
                                  unsigned jobs)
{
    std::vector<Preview> previews(images.size());
    const ProgressBar bar(images.size());
    std::mutex barMutex;
    std::size_t done = 0;
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        for (std::size_t own = next++; own < images.size(); own = next++) {
            previews[own] = MakePreview(images[own], request);
            const std::lock_guard lock(barMutex);
            bar.Show(++done);
        }
    };
    std::vector<std::thread> workers;
    for (std::size_t i = 0; i < std::min<std::size_t>(jobs, images.size()); ++i)
        workers.emplace_back(work);
    for (std::thread& worker : workers)
        worker.join();
    return previews;
}
