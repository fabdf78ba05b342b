// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Stalled readers of the outputs: a run ends, and changes the phone as every other run does.

#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "bundledPlatform.h"
#include "phoneImage.h"

namespace fs = std::filesystem;

namespace
{

/// A pipe that is full, and that is not read.
struct FullPipe {
    FullPipe()
    {
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        (void)fcntl(ends[1], F_SETFL, O_NONBLOCK);
        while (write(ends[1], "x", 1) == 1) {
        }
        (void)fcntl(ends[1], F_SETFL, 0);
    }
    ~FullPipe()
    {
        (void)close(ends[0]);
        (void)close(ends[1]);
    }
    FullPipe(const FullPipe&) = delete;
    FullPipe& operator=(const FullPipe&) = delete;

    int ends[2] = {-1, -1};
};

constexpr int kLimitSeconds = 60;

/// Runs the command with these outputs.
///
/// @return its exit status; 137 if it had to be killed
int ExitStatusOf(std::vector<std::string> command, const std::vector<std::string>& environment, int output, int errors)
{
    command.insert(command.begin(), {"timeout", "-s", "KILL", std::to_string(kLimitSeconds)});
    std::vector<char*> arguments;
    for (std::string& argument : command)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    std::vector<char*> variables;
    for (const std::string& variable : environment)
        variables.push_back(const_cast<char*>(variable.c_str()));
    variables.push_back(nullptr);

    const pid_t child = fork();
    if (child == 0) {
        (void)dup2(open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
        (void)dup2(output, STDOUT_FILENO);
        (void)dup2(errors, STDERR_FILENO);
        (void)execvpe(arguments.front(), arguments.data(), variables.data());
        _exit(127);
    }
    int status = -1;
    if (waitpid(child, &status, 0) != child)
        return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::map<std::string, std::string> FilesOf(const PhoneImage& phone)
{
    std::map<std::string, std::string> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(phone.HostPath("/config"))) {
        if (entry.is_regular_file())
            files[entry.path().string()] = ReadBytes(entry.path().string());
    }
    return files;
}

} // namespace

TEST(StandingReaders, ARunWhoseOutputsNobodyReadsEndsAndChangesThePhoneAsEveryOther)
{
    if (!kHasBundledPlatform)
        GTEST_SKIP() << "how long an output is waited for is the bundled platform's choice";
    // The example phone's table pass prints 20 KB; both pipes are full from the start, so none of it fits.
    PhoneImage ordinary;
    ordinary.PutExamplePhone();
    EXPECT_GT(ordinary.Run("all").output.size(), 4096u);
    PhoneImage phone;
    phone.PutExamplePhone();
    const FullPipe output;
    const FullPipe errors;
    EXPECT_EQ(ExitStatusOf(phone.Command({"all"}), phone.Environment(), output.ends[1], errors.ends[1]), 0)
        << "137: it has not ended within " << kLimitSeconds << " seconds";

    std::map<std::string, std::string> expected;
    for (const auto& [path, bytes] : FilesOf(ordinary))
        expected[phone.HostPath(path.substr(ordinary.HostPath("").size()))] = bytes;
    EXPECT_EQ(FilesOf(phone), expected);
}

TEST(StandingReaders, AReaderThatReadsSlowlyGetsAll)
{
    PhoneImage ordinary;
    ordinary.PutExamplePhone();
    const std::string expected = ordinary.Run("dev").output;
    PhoneImage phone;
    phone.PutExamplePhone();
    int ends[2] = {-1, -1};
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    (void)fcntl(ends[1], F_SETPIPE_SZ, 4096);
    std::string received;
    std::thread reader([&] {
        char piece[512];
        for (ssize_t count = 0; (count = read(ends[0], piece, sizeof piece)) > 0;)
            received.append(piece, static_cast<std::size_t>(count));
    });
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    EXPECT_EQ(ExitStatusOf(phone.Command({"dev"}), phone.Environment(), ends[1], nowhere), 0);
    (void)close(ends[1]);
    reader.join();
    (void)close(ends[0]);
    (void)close(nowhere);
    EXPECT_EQ(received, expected);
}
