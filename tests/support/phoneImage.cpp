// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "phoneImage.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <sstream>

namespace fs = std::filesystem;

namespace
{

constexpr const char* kTrees[] = {"config", "phone", "tmp"};

/// The machine's own programs and libraries, whether /bin and its like are links into /usr or folders.
std::vector<std::string> SystemFolders()
{
    std::vector<std::string> options = {"--ro-bind", "/usr", "/usr"};
    for (const char* name : {"/bin", "/sbin", "/lib", "/lib32", "/lib64", "/libx32"}) {
        if (fs::is_symlink(name))
            options.insert(options.end(), {"--symlink", fs::read_symlink(name).string(), name});
        else if (fs::exists(name))
            options.insert(options.end(), {"--ro-bind", name, name});
    }
    return options;
}

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

/// The line-by-line report of a failing comparison of long texts needs unbounded memory.
void ExpectEqual(const std::string& actual, const std::string& expected, const std::string& message)
{
    constexpr std::size_t kMostShown = 1 << 15;
    if (actual.size() + expected.size() <= kMostShown)
        EXPECT_EQ(actual, expected) << message;
    else
        EXPECT_TRUE(actual == expected) << message << ": " << actual.size() << " bytes, expected " << expected.size();
}

std::string Describe(const fs::directory_entry& entry)
{
    const fs::file_status status = entry.symlink_status();
    std::ostringstream text;
    text << "mode " << std::oct << static_cast<unsigned>(status.permissions()) << ' ';
    if (fs::is_symlink(status))
        text << "link to " << fs::read_symlink(entry.path()).string();
    else if (fs::is_directory(status))
        text << "folder";
    else if (fs::is_regular_file(status))
        text << "file:\n" << ReadBytes(entry.path().string());
    else
        text << "special " << static_cast<int>(status.type());
    return text.str();
}

} // namespace

std::string Account(int number)
{
    return "/config/user/voip/sipAccount" + std::to_string(number) + ".cfg";
}

PhoneImage::PhoneImage()
{
    for (const char* tree : kTrees)
        fs::create_directory(folder_.Path(tree));
    environment_ = {"PATH=/usr/bin:/bin"};
    for (const char* name : {"ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS"}) {
        if (const char* value = std::getenv(name))
            SetEnvironment(name, value);
    }
}

void PhoneImage::Put(const std::string& path, const std::string& bytes)
{
    WriteBytes(HostPath(path), bytes);
}

void PhoneImage::PutFolder(const std::string& path)
{
    fs::create_directories(HostPath(path));
}

void PhoneImage::PutExamplePhone()
{
    fs::copy(KESTRUNE_EXAMPLE_PHONE, folder_.Path(),
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
}

void PhoneImage::Remove(const std::string& path)
{
    fs::remove_all(HostPath(path));
}

bool PhoneImage::Has(const std::string& path) const
{
    return fs::exists(fs::symlink_status(HostPath(path)));
}

std::string PhoneImage::Get(const std::string& path) const
{
    return ReadBytes(HostPath(path));
}

std::string PhoneImage::HostPath(const std::string& path) const
{
    return folder_.Path() + path;
}

void PhoneImage::SetEnvironment(const std::string& name, const std::string& value)
{
    environment_.push_back(name + "=" + value);
}

void PhoneImage::AddSandboxOptions(const std::vector<std::string>& options)
{
    sandboxOptions_.insert(sandboxOptions_.end(), options.begin(), options.end());
}

const ProcessResult& PhoneImage::Run(const std::string& mode)
{
    RunWith({mode});
    EXPECT_EQ(result_.exitStatus, 0) << result_.errors;
    for (const auto& [path, description] : TakeSnapshot())
        EXPECT_EQ(path.find(".kestrune-new"), std::string::npos) << "temporary file left: " << path;
    return result_;
}

const ProcessResult& PhoneImage::RunWith(const std::vector<std::string>& arguments)
{
    before_ = TakeSnapshot();
    expected_.clear();
    result_ = RunProcess(Command(arguments), environment_);
    return result_;
}

std::vector<std::string> PhoneImage::Command(const std::vector<std::string>& arguments,
                                             const std::string& program) const
{
    if (IsEmulated())
        return Sandboxed({KESTRUNE_EMULATOR, "-0", program, program}, arguments);
    return Sandboxed({program}, arguments);
}

std::vector<std::string> PhoneImage::CommandWithName(const std::string& name,
                                                     const std::vector<std::string>& arguments) const
{
    if (IsEmulated())
        return Sandboxed({KESTRUNE_EMULATOR, "-0", name, "/kestrune"}, arguments);
    return Sandboxed({"bash", "-c", "exec -a \"$0\" /kestrune \"$@\"", name}, arguments);
}

bool PhoneImage::IsEmulated()
{
    return *KESTRUNE_EMULATOR != '\0';
}

std::vector<std::string> PhoneImage::Sandboxed(const std::vector<std::string>& start,
                                               const std::vector<std::string>& arguments) const
{
    std::vector<std::string> command = {"bwrap", "--unshare-pid", "--die-with-parent", "--tmpfs", "/"};
    const auto add = [&command](const std::vector<std::string>& options) {
        command.insert(command.end(), options.begin(), options.end());
    };
    add(SystemFolders());
    add({"--proc", "/proc", "--dev", "/dev", "--ro-bind", KESTRUNE_PROGRAM, "/kestrune"});
    for (const char* tree : kTrees)
        add({"--bind", folder_.Path(tree), std::string("/") + tree});
    if (const char* folder = std::getenv("KESTRUNE_SANDBOX_BIND"))
        add({"--bind", folder, folder}); // a program built with coverage writes its counters there
    add(sandboxOptions_);
    add({"--remount-ro", "/", "--chdir", "/", "--"});
    add(start);
    add(arguments);
    return command;
}

std::vector<std::string> PhoneImage::Environment() const
{
    return environment_;
}

std::vector<std::string> PhoneImage::Reports() const
{
    std::vector<std::string> reports;
    for (const std::string& line : Lines(result_.errors)) {
        if (line.rfind("chTraceStack: ", 0) != 0)
            reports.push_back(line);
    }
    return reports;
}

std::vector<std::string> PhoneImage::ReportsWithScopes() const
{
    return Lines(result_.errors);
}

std::vector<std::string> PhoneImage::Output() const
{
    return Lines(result_.output);
}

void PhoneImage::Expect(const std::string& path, const std::string& bytes)
{
    expected_.insert(path);
    if (Has(path))
        ExpectEqual(Get(path), bytes, path);
    else
        ADD_FAILURE() << path << " is missing";
}

void PhoneImage::ExpectMissing(const std::string& path)
{
    expected_.insert(path);
    EXPECT_FALSE(Has(path)) << path << " is there";
}

void PhoneImage::ExpectNothingElseChanged()
{
    Snapshot before = before_;
    Snapshot after = TakeSnapshot();
    for (const std::string& path : expected_) {
        before.erase(path);
        after.erase(path);
    }
    for (const auto& [path, description] : before) {
        const auto found = after.find(path);
        if (found == after.end())
            ADD_FAILURE() << path << " has gone";
        else
            ExpectEqual(found->second, description, path + " has changed");
    }
    for (const auto& [path, description] : after)
        EXPECT_EQ(before.count(path), 1u) << path << " is new: " << description;
}

PhoneImage::Snapshot PhoneImage::TakeSnapshot() const
{
    Snapshot snapshot;
    for (const char* tree : kTrees) {
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder_.Path(tree)))
            snapshot[entry.path().string().substr(folder_.Path().size())] = Describe(entry);
    }
    return snapshot;
}
