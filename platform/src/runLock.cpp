// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "runLock.h"

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace
{

constexpr char kLockedFolder[] = "/config";
constexpr int kMostTries = 200;
constexpr timespec kPause = {0, 100'000'000}; // nanoseconds: 20 seconds in all, independent of clocks

/// Static, because the lock lasts as long as the run; -1 without one.
int lockedFolder = -1;

/// Without a free descriptor besides that of the lock, the process could read and save nothing.
bool HasDescriptorToSpare()
{
    const int spare = fcntl(lockedFolder, F_DUPFD_CLOEXEC, 0);
    if (spare != -1)
        (void)close(spare);
    return spare != -1;
}

} // namespace

bool LockRuns()
{
    lockedFolder = open(kLockedFolder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (lockedFolder == -1)
        return true;
    for (int tries = 0; flock(lockedFolder, LOCK_EX | LOCK_NB) != 0; ++tries) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            break; // locks are not supported here
        if (tries == kMostTries) {
            UnlockRuns();
            return false;
        }
        (void)nanosleep(&kPause, /*remaining=*/nullptr);
    }
    if (!HasDescriptorToSpare())
        UnlockRuns();
    return true;
}

void UnlockRuns()
{
    if (lockedFolder != -1)
        (void)close(lockedFolder);
    lockedFolder = -1;
}
