// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "processStart.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <initializer_list>
#include <sys/prctl.h>
#include <unistd.h>
#ifdef __GLIBC__
#include <malloc.h>
#endif

void PrepareProcess()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) != -1 || errno != EBADF)
            continue;
        // This is the lowest free number. Without "/dev/null" the root folder is opened instead: writing to it fails.
        if (open("/dev/null", O_RDWR) == -1)
            (void)open("/", O_PATH);
    }
    (void)std::signal(SIGPIPE, SIG_IGN);
    (void)std::signal(SIGXFSZ, SIG_IGN);
    if (geteuid() == 0)
        (void)prctl(PR_SET_DUMPABLE, 0);
    (void)unsetenv("TZ"); // the C library opens the file that it names, and waits for a pipe
#ifdef __GLIBC__
    // With a dynamic threshold, released large files would stay in the heap: twice the memory.
    constexpr int kMmapThreshold = 128 * 1024; // bytes
    (void)mallopt(M_MMAP_THRESHOLD, kMmapThreshold);
#endif
}
