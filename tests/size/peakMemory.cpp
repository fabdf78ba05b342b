// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// peakMemory PROGRAM [ARGUMENT...]: runs the program and prints its peak resident memory in KiB on standard output; the
// program's own outputs are discarded.
//
// The figure is the kernel's high-water mark at the program's exit, where ptrace stops it: the value of getrusage for a
// child also counts the memory that its parent had at the fork.

#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr int kNotRun = 127;

[[noreturn]] void Become(char** command)
{
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    (void)dup2(nowhere, STDOUT_FILENO);
    (void)dup2(nowhere, STDERR_FILENO);
    (void)ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    (void)execv(command[0], command);
    _exit(kNotRun);
}

/// @return the line's figure in KiB; -1 if there is none
long HighWaterMark(pid_t process)
{
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmHWM:", 0) == 0)
            return std::stol(line.substr(line.find_first_of("0123456789")));
    }
    return -1;
}

bool IsExitEvent(int status)
{
    return WIFSTOPPED(status) && status >> 8 == (SIGTRAP | PTRACE_EVENT_EXIT << 8);
}

/// Lets the process run to its exit, and reads the mark there.
long PeakOf(pid_t process)
{
    long peak = -1;
    int status = 0;
    bool isFirstStop = true;
    while (waitpid(process, &status, 0) == process && WIFSTOPPED(status)) {
        if (isFirstStop)
            (void)ptrace(PTRACE_SETOPTIONS, process, nullptr, PTRACE_O_TRACEEXIT | PTRACE_O_EXITKILL);
        if (IsExitEvent(status))
            peak = HighWaterMark(process);
        const bool isOurs = isFirstStop || IsExitEvent(status);
        isFirstStop = false;
        (void)ptrace(PTRACE_CONT, process, nullptr, isOurs ? 0 : WSTOPSIG(status));
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? peak : -1;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount < 2)
        return 2;
    const pid_t process = fork();
    if (process == 0)
        Become(arguments + 1);
    const long peak = PeakOf(process);
    std::printf("%ld\n", peak);
    return peak > 0 ? 0 : 1;
}
