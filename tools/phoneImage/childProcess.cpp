// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "childProcess.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "descriptor.h"
#include "scratch.h"
#include "toolError.h"

extern "C" {
#include <sys/pidfd.h> // has no linkage of its own for C++ in glibc 2.36
}

namespace
{

constexpr int kMostMilliseconds = 60'000;
constexpr std::size_t kMostOutputBytes = 64 << 20;

/// How a program is started: with the signals that we block or ignore as they usually are.
class UsualSignals
{
public:
    UsualSignals()
    {
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        for (const int signal : {SIGPIPE, SIGXFSZ})
            sigaddset(&signals, signal);
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~UsualSignals() { posix_spawnattr_destroy(&attributes_); }
    UsualSignals(const UsualSignals&) = delete;
    UsualSignals& operator=(const UsualSignals&) = delete;

    const posix_spawnattr_t* Get() const { return &attributes_; }

private:
    posix_spawnattr_t attributes_;
};

/// A started program; killed and waited for if it has not ended when the object goes.
class Child
{
public:
    Child(const std::vector<std::string>& arguments, int input, int output, int errors)
    {
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
        std::vector<char*> pointers;
        for (const std::string& argument : arguments)
            pointers.push_back(const_cast<char*>(argument.c_str()));
        pointers.push_back(nullptr);
        const UsualSignals signals;
        const int error = posix_spawnp(&process_, pointers.front(), &actions, signals.Get(), pointers.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        if (error != 0)
            throw ToolError("cannot start " + arguments.front() + ": " + std::strerror(error));
    }

    ~Child()
    {
        if (process_ > 0) {
            (void)kill(process_, SIGKILL);
            (void)waitpid(process_, /*status=*/nullptr, 0);
        }
    }

    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    int Wait()
    {
        const Descriptor end(pidfd_open(process_, 0));
        pollfd waiting = {end.Number(), POLLIN, 0};
        if (!end.IsOpen() || poll(&waiting, 1, kMostMilliseconds) != 1)
            throw ToolError("a run on the phone's copy has not ended after a minute");
        int status = 0;
        (void)waitpid(process_, &status, 0); // it has ended
        process_ = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

private:
    pid_t process_ = 0;
};

Descriptor OpenOrThrow(const std::filesystem::path& path, int flags)
{
    const int descriptor = open(path.c_str(), flags | O_CLOEXEC, 0600);
    if (descriptor < 0)
        throw ToolError("cannot open " + path.string() + ": " + std::strerror(errno));
    return Descriptor(descriptor);
}

/// @return false at the end of what the program writes
bool ReadLine(int descriptor, std::string& line)
{
    line.clear();
    for (;;) {
        pollfd waiting = {descriptor, POLLIN, 0};
        char character = 0;
        if (poll(&waiting, 1, kMostMilliseconds) != 1)
            throw ToolError("a pass on the phone's copy has not ended after a minute");
        if (read(descriptor, &character, 1) != 1)
            return false;
        if (character == '\n')
            return true;
        line += character;
    }
}

} // namespace

ChildResult RunChild(const std::vector<std::string>& arguments, const std::string& input)
{
    // Files and no pipes: a program that writes much never waits for its reader.
    const Scratch scratch;
    WriteWhole(scratch.Path("input"), input);
    ChildResult result;
    {
        const Descriptor in = OpenOrThrow(scratch.Path("input"), O_RDONLY);
        const Descriptor out = OpenOrThrow(scratch.Path("output"), O_WRONLY | O_CREAT | O_APPEND);
        const Descriptor errors = OpenOrThrow(scratch.Path("errors"), O_WRONLY | O_CREAT | O_APPEND);
        Child child(arguments, in.Number(), out.Number(), errors.Number());
        result.exitStatus = child.Wait();
    }
    result.output = ReadWhole(scratch.Path("output"), kMostOutputBytes);
    result.errors = ReadWhole(scratch.Path("errors"), kMostOutputBytes);
    return result;
}

int RunInSteps(const std::vector<std::string>& arguments, const std::function<void(const std::string&)>& atLine)
{
    int toChild[2] = {-1, -1};
    int fromChild[2] = {-1, -1};
    if (pipe2(toChild, O_CLOEXEC) != 0 || pipe2(fromChild, O_CLOEXEC) != 0)
        throw ToolError(std::string("cannot make a pipe: ") + std::strerror(errno));
    const Descriptor questions(toChild[1]);
    const Descriptor answers(fromChild[0]);
    const auto start = [&] {
        const Descriptor in(toChild[0]); // the child's own ends are closed here, or its end would not be seen
        const Descriptor out(fromChild[1]);
        const Descriptor nowhere = OpenOrThrow("/dev/null", O_WRONLY);
        return std::make_unique<Child>(arguments, in.Number(), out.Number(), nowhere.Number());
    };
    const std::unique_ptr<Child> child = start();
    for (std::string line; ReadLine(answers.Number(), line);) {
        atLine(line);
        if (!WriteAll(questions.Number(), "\n"))
            break; // it has ended, as its status says
    }
    return child->Wait();
}
