// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "childProcess.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "descriptor.h"
#include "toolError.h"

extern "C" {
#include <sys/pidfd.h> // has no linkage of its own for C++ in glibc 2.36
}

namespace
{

constexpr int kMostMilliseconds = 60'000;
constexpr char kTooSlow[] = "a run on the phone's copy has not ended after a minute";
constexpr off_t kMostOutputBytes = 64 << 20;

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
            throw ToolError(kTooSlow);
        int status = 0;
        (void)waitpid(process_, &status, 0); // it has ended
        process_ = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

private:
    pid_t process_ = 0;
};

constexpr std::uint64_t kMostMessageBytes = 256 << 20;

/// A file in memory, for what a program writes: no pipe, so that it never waits for its reader.
class Output
{
public:
    Output() : file_(memfd_create("output", MFD_CLOEXEC))
    {
        if (!file_.IsOpen() || fcntl(file_.Number(), F_SETFL, O_APPEND) != 0)
            throw ToolError(std::string("cannot make a file in memory: ") + std::strerror(errno));
    }

    int Number() const { return file_.Number(); }

    std::string Read() const
    {
        struct stat status = {};
        if (fstat(file_.Number(), &status) != 0 || status.st_size > kMostOutputBytes)
            throw ToolError("a program wrote more than " + std::to_string(kMostOutputBytes) + " bytes");
        std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
        if (pread(file_.Number(), bytes.data(), bytes.size(), 0) != status.st_size)
            throw ToolError("cannot read what a program wrote");
        return bytes;
    }

private:
    Descriptor file_;
};

Descriptor OpenNothing()
{
    return Descriptor(open("/dev/null", O_RDONLY | O_CLOEXEC));
}

struct Pipe {
    Pipe()
    {
        if (pipe2(ends, O_CLOEXEC) != 0)
            throw ToolError(std::string("cannot make a pipe: ") + std::strerror(errno));
    }

    int ends[2] = {-1, -1}; ///< for reading, for writing
};

/// @return false at the end of what the program writes
bool ReadFully(int descriptor, char* bytes, std::size_t size)
{
    while (size > 0) {
        pollfd waiting = {descriptor, POLLIN, 0};
        if (poll(&waiting, 1, kMostMilliseconds) != 1)
            throw ToolError(kTooSlow);
        const ssize_t count = read(descriptor, bytes, size);
        if (count <= 0)
            return false;
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace

ChildResult RunChild(const std::vector<std::string>& arguments)
{
    const Output output;
    const Output errors;
    Child child(arguments, OpenNothing().Number(), output.Number(), errors.Number());
    ChildResult result;
    result.exitStatus = child.Wait();
    result.output = output.Read();
    result.errors = errors.Read();
    return result;
}

struct TalkingChild::Parts {
    explicit Parts(const std::vector<std::string>& arguments, Pipe toChild = {}, Pipe fromChild = {})
        : questions(toChild.ends[1]), answers(fromChild.ends[0])
    {
        const Descriptor in(toChild.ends[0]); // the child's own ends are closed here, or its end would not be seen
        const Descriptor out(fromChild.ends[1]);
        child.emplace(arguments, in.Number(), out.Number(), errors.Number());
    }

    const Descriptor questions;
    const Descriptor answers;
    const Output errors;
    std::optional<Child> child;
};

TalkingChild::TalkingChild(const std::vector<std::string>& arguments) : parts_(std::make_unique<Parts>(arguments)) {}

TalkingChild::~TalkingChild() = default;

void TalkingChild::Send(std::string_view message)
{
    const std::uint64_t size = message.size();
    (void)(WriteAll(parts_->questions.Number(), {reinterpret_cast<const char*>(&size), sizeof size}) &&
           WriteAll(parts_->questions.Number(), message)); // if it has ended, there is no answer
}

std::optional<std::string> TalkingChild::Receive()
{
    std::uint64_t size = 0;
    if (!ReadFully(parts_->answers.Number(), reinterpret_cast<char*>(&size), sizeof size))
        return std::nullopt;
    if (size > kMostMessageBytes)
        throw ToolError("the answer of a program in the sandbox is too large");
    std::string message(size, '\0');
    return ReadFully(parts_->answers.Number(), message.data(), size) ? std::optional(std::move(message)) : std::nullopt;
}

ChildResult TalkingChild::End()
{
    ChildResult result;
    result.exitStatus = parts_->child->Wait();
    result.errors = parts_->errors.Read();
    return result;
}
