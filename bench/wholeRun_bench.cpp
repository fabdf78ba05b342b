// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Whole runs on the example phone. The program is started in a sandbox, which shows the image as "/image" and the
// programs as "/bench"; the phone's folders are in memory, and created again before each run.

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "phoneFacts.h"
#include "scratchFolder.h"

namespace
{

constexpr char kProgram[] = "/bench/kestrune";

/// The program's output is discarded, since the figures are written to standard output.
void Run(const char* program, const char* mode)
{
    posix_spawn_file_actions_t actions;
    Require(posix_spawn_file_actions_init(&actions) == 0 &&
                posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0) == 0,
            "turn the output away");
    char* arguments[] = {const_cast<char*>(program), const_cast<char*>(mode), nullptr};
    pid_t process = 0;
    int status = 0;
    Require(posix_spawn(&process, program, &actions, nullptr, arguments, environ) == 0, "start a program");
    (void)posix_spawn_file_actions_destroy(&actions); // cannot fail
    Require(waitpid(process, &status, 0) == process && status == 0, "run a program");
}

void MakeBlankPhone()
{
    for (const char* folder : {"/config", "/phone", "/tmp"}) {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directory(folder);
    }
}

void MakePhone()
{
    MakeBlankPhone();
    std::filesystem::copy("/image", "/", std::filesystem::copy_options::recursive);
}

void GiveKeyNumber(const std::string& accountFile)
{
    std::stringstream text;
    text << std::ifstream(accountFile).rdbuf();
    std::string changed = text.str();
    constexpr char kNone[] = "SCALineKeyNumber=-1";
    const std::size_t none = changed.find(kNone);
    if (none != std::string::npos)
        WriteDurably(accountFile, changed.replace(none, sizeof kNone - 1, "SCALineKeyNumber=1"));
}

/// A phone that needs no change: passwords in the factory's form, fix-ups done, and an explicit key number in each
/// account (the fix-ups would write "-1" again).
void MakeIdlePhone()
{
    MakePhone();
    std::stringstream text;
    text << std::ifstream(kFactoryUserIni).rdbuf();
    std::string changed = text.str();
    const std::size_t lock = changed.find("EnLock=1");
    Require(lock != std::string::npos, "find EnLock=1 in the factory's file");
    changed.replace(lock, 8, "EnLock=0");
    WriteDurably(kFactoryUserIni, changed);
    Run(kProgram, "pwd");
    for (int account = 0; account <= kLastAccount; ++account)
        GiveKeyNumber(AccountFilePath(account));
}

void MakePhoneFor(const std::string& mode)
{
    if (mode == "idle")
        return MakeIdlePhone();
    if (mode == "blank")
        return MakeBlankPhone();
    MakePhone();
    if (mode == "2")
        Run(kProgram, "1"); // the first half of the hand-over
}

/// Also reports the median of the runs: on a busy machine, the mean mostly reflects other processes.
void Do(benchmark::State& state, const std::string& mode, const std::string& program)
{
    std::vector<double> seconds;
    for (auto _ : state) {
        MakePhoneFor(mode);
        const auto begin = std::chrono::steady_clock::now();
        Run(program.c_str(), mode == "idle" || mode == "blank" ? "pwd" : mode.c_str());
        seconds.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
        state.SetIterationTime(seconds.back());
    }
    const auto middle = seconds.begin() + static_cast<std::ptrdiff_t>(seconds.size() / 2);
    std::nth_element(seconds.begin(), middle, seconds.end());
    state.counters["median"] = *middle;
}

void Register(const std::string& mode, const std::string& name, const std::string& program)
{
    benchmark::RegisterBenchmark(("run/" + mode + "/" + name).c_str(), Do, mode, program)->UseManualTime();
}

} // namespace

int main(int argumentCount, char** arguments)
{
    for (const char* mode : {"all", "dev", "pwd", "1", "2", "idle", "blank"}) {
        Register(mode, "kestrune", kProgram);
        Register(mode, "floor", std::string("/bench/floor_") + mode);
        Register(mode, "empty", "/bench/empty");
    }
    benchmark::Initialize(&argumentCount, arguments);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
