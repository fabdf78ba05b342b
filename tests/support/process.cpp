// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "process.h"

#include <cerrno>
#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>

#include "scratchFolder.h"

namespace
{

std::vector<char*> Pointers(const std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (const std::string& text : texts)
        pointers.push_back(const_cast<char*>(text.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

int WaitFor(pid_t process)
{
    int status = 0;
    while (waitpid(process, &status, 0) == -1) {
        if (errno != EINTR)
            throw std::runtime_error("waitpid failed");
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace

ProcessResult RunProcess(const std::vector<std::string>& arguments, const std::vector<std::string>& environment)
{
    // Files instead of pipes, so that a process that prints much never waits for its reader.
    const ScratchFolder folder;
    const std::string outputPath = folder.Path("output");
    const std::string errorsPath = folder.Path("errors");

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, outputPath.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, errorsPath.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    pid_t process = 0;
    const int error = posix_spawnp(&process, arguments.front().c_str(), &actions, /*attributes=*/nullptr,
                                   Pointers(arguments).data(), Pointers(environment).data());
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        throw std::runtime_error("cannot start " + arguments.front());

    ProcessResult result;
    result.exitStatus = WaitFor(process);
    result.output = ReadBytes(outputPath);
    result.errors = ReadBytes(errorsPath);
    return result;
}
