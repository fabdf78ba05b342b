// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fleet.h"

#include <algorithm>
#include <mutex>
#include <thread>

#include "output/progressBar.h"

std::vector<Preview> MakePreviews(const std::vector<std::filesystem::path>& images, const PreviewRequest& request,
                                  unsigned jobs)
{
    std::vector<Preview> previews(images.size());
    const ProgressBar bar(images.size());
    std::mutex mutex;
    std::size_t next = 0;
    std::size_t done = 0;
    const auto work = [&] {
        for (std::unique_lock lock(mutex); next < images.size();) {
            const std::size_t own = next++;
            lock.unlock();
            Preview preview = MakePreview(images[own], request);
            lock.lock();
            previews[own] = std::move(preview);
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
