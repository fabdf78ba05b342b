// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "temporary.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <set>
#include <thread>
#include <unistd.h>

#include "toolError.h"

namespace fs = std::filesystem;

namespace
{

/// All that are there. Never freed: the thread that waits for signals may outlive everything else.
struct Paths {
    std::mutex mutex;
    std::set<fs::path> paths;
};

Paths& AllPaths()
{
    static auto* paths = new Paths;
    return *paths;
}

sigset_t Interruptions()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM})
        sigaddset(&signals, signal);
    return signals;
}

[[noreturn]] void EndAtInterruption()
{
    const sigset_t signals = Interruptions();
    int signal = 0;
    while (sigwait(&signals, &signal) != 0) {
    }
    const std::lock_guard lock(AllPaths().mutex); // kept, so that no new one is made
    std::error_code ignored;                      // the process ends: there is no one to report to
    for (const fs::path& path : AllPaths().paths)
        fs::remove_all(path, ignored);
    _exit(128 + signal);
}

} // namespace

void RemoveTemporariesWhenInterrupted()
{
    const sigset_t signals = Interruptions();
    (void)pthread_sigmask(SIG_BLOCK, &signals, /*oldset=*/nullptr); // later threads inherit it
    std::thread(&EndAtInterruption).detach();
}

Temporary::Temporary(const fs::path& stem, Kind kind)
{
    const std::lock_guard lock(AllPaths().mutex);
    std::string name = stem.string() + ".XXXXXX";
    if (kind == Kind::File)
        number_ = mkostemp(name.data(), O_CLOEXEC);
    if (kind == Kind::File ? number_ < 0 : mkdtemp(name.data()) == nullptr)
        throw ToolError("cannot make " + name + ": " + std::strerror(errno));
    if (kind == Kind::Folder)
        number_ = open(name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    path_ = name;
    AllPaths().paths.insert(path_);
}

Temporary::~Temporary()
{
    if (number_ >= 0)
        (void)close(number_); // every write was checked
    const std::lock_guard lock(AllPaths().mutex);
    if (path_.empty())
        return;
    std::error_code ignored; // a destructor cannot report it
    fs::remove_all(path_, ignored);
    AllPaths().paths.erase(path_);
}

void Temporary::RenameTo(const fs::path& path)
{
    const std::lock_guard lock(AllPaths().mutex);
    if (std::rename(path_.c_str(), path.c_str()) != 0)
        throw ToolError("cannot write " + path.string() + ": " + std::strerror(errno));
    AllPaths().paths.erase(path_);
    path_.clear();
}
