// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "scratch.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <set>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "descriptor.h"
#include "toolError.h"

namespace
{

/// All folders that are there. Never released: the thread that waits for signals may outlive everything else.
struct Folders {
    std::mutex mutex;
    std::set<std::filesystem::path> paths;
};

Folders& AllFolders()
{
    static auto* folders = new Folders;
    return *folders;
}

sigset_t Interruptions()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGHUP, SIGINT, SIGTERM})
        sigaddset(&signals, signal);
    return signals;
}

[[noreturn]] void EndAtInterruption()
{
    const sigset_t signals = Interruptions();
    int signal = 0;
    while (sigwait(&signals, &signal) != 0) {
    }
    const std::lock_guard lock(AllFolders().mutex); // kept: nobody makes another one
    std::error_code ignored;                        // nobody is left to tell
    for (const std::filesystem::path& path : AllFolders().paths)
        std::filesystem::remove_all(path, ignored);
    _exit(128 + signal);
}

} // namespace

void RemoveScratchWhenInterrupted()
{
    const sigset_t signals = Interruptions();
    (void)pthread_sigmask(SIG_BLOCK, &signals, /*oldset=*/nullptr); // threads to come inherit it
    std::thread(&EndAtInterruption).detach();
}

Scratch::Scratch()
{
    const std::lock_guard lock(AllFolders().mutex);
    const char* parent = std::getenv("TMPDIR");
    std::string name = std::string(parent == nullptr || *parent == '\0' ? "/tmp" : parent) + "/kestrune-preview-XXXXXX";
    if (mkdtemp(name.data()) == nullptr)
        throw ToolError("cannot make a folder " + name + ": " + std::strerror(errno));
    folder_ = name;
    AllFolders().paths.insert(folder_);
}

Scratch::~Scratch()
{
    std::error_code ignored; // nobody is left to tell
    std::filesystem::remove_all(folder_, ignored);
    const std::lock_guard lock(AllFolders().mutex);
    AllFolders().paths.erase(folder_);
}

std::string ReadWhole(const std::filesystem::path& path, std::size_t mostBytes)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    if (!file.IsOpen() || fstat(file.Number(), &status) != 0 || !S_ISREG(status.st_mode))
        throw ToolError("cannot read " + path.string());

    std::string bytes;
    char block[65536];
    ssize_t size = 0;
    while ((size = read(file.Number(), block, sizeof block)) > 0) {
        bytes.append(block, static_cast<std::size_t>(size));
        if (bytes.size() > mostBytes)
            throw ToolError(path.string() + " has more than " + std::to_string(mostBytes) + " bytes");
    }
    if (size < 0)
        throw ToolError("cannot read " + path.string() + ": " + std::strerror(errno));
    return bytes;
}

void WriteWhole(const std::filesystem::path& path, const std::string& bytes, Readers readers)
{
    const mode_t bits = readers == Readers::Owner ? 0600 : 0666;
    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, bits);
    const Descriptor file(descriptor);
    if (!file.IsOpen() || !WriteAll(file.Number(), bytes))
        throw ToolError("cannot write " + path.string() + ": " + std::strerror(errno));
}
