// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "sandbox.h"

#include <initializer_list>
#include <sstream>

#include "imageLimits.h"
#include "scratch.h"
#include "toolError.h"

namespace fs = std::filesystem;

std::vector<std::string> SandboxCommand(const fs::path& phone, const SandboxPrograms& programs,
                                        const std::string& started)
{
    // Without capabilities a program that root starts cannot mount this machine's folders again to write to them.
    std::vector<std::string> command = {"bwrap", "--die-with-parent", "--new-session", "--cap-drop", "ALL"};
    const auto add = [&command](const std::vector<std::string>& options) {
        command.insert(command.end(), options.begin(), options.end());
    };
    add({"--unshare-pid", "--unshare-net", "--unshare-ipc", "--unshare-uts"});
    add({"--clearenv", "--setenv", "PATH", "/usr/bin:/bin"});
    add({"--tmpfs", "/", "--ro-bind", "/usr", "/usr"});
    for (const char* name : {"/bin", "/sbin", "/lib", "/lib32", "/lib64", "/libx32"}) {
        if (fs::is_symlink(name))
            add({"--symlink", fs::read_symlink(name).string(), name});
        else if (fs::exists(name))
            add({"--ro-bind", name, name});
    }
    add({"--proc", "/proc", "--dev", "/dev"});
    for (const auto& [name, program] : programs)
        add({"--ro-bind", program.string(), name});
    for (const char* tree : kPhoneTrees)
        add({"--bind", (phone / tree).string(), std::string("/") + tree});
    add({"--remount-ro", "/", "--chdir", "/", "--", started});
    return command;
}

void RequireSandbox()
{
    const Scratch phone;
    for (const char* tree : kPhoneTrees)
        fs::create_directory(phone.Path(tree));
    std::string reason;
    try {
        const ChildResult result = RunChild(SandboxCommand(phone.Path(""), {}, "/bin/true"));
        if (result.exitStatus != 0)
            reason = SandboxWords(result);
    } catch (const ToolError& error) {
        reason = error.what();
    }
    if (!reason.empty())
        throw ToolError("no sandbox: " + reason +
                        " (it needs the package bubblewrap and, in a container, the right to make user namespaces)");
}

std::string SandboxWords(const ChildResult& result)
{
    std::string words;
    std::istringstream errors(result.errors);
    for (std::string line; std::getline(errors, line);) {
        if (line.rfind("bwrap: ", 0) == 0)
            words += (words.empty() ? "" : "; ") + line;
    }
    return words.empty() ? "exit status " + std::to_string(result.exitStatus) : words;
}
