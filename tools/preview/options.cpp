// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <sstream>
#include <thread>
#include <unistd.h>

#include "phoneImage/printable.h"

namespace fs = std::filesystem;

namespace
{

constexpr const char* kModes[] = {"all", "dev", "pwd", "1", "2"};

/// The command line as it was given.
struct Arguments {
    std::vector<std::string> words; ///< IMAGE... MODE...
    std::string colour = "auto";
    fs::path program;
    fs::path emulator;
    fs::path sysroot;
    bool isRevealed = false;
    bool isAnyMode = false;
};

/// Reports an error of the command line.
OptionsResult Refuse(const std::string& reason)
{
    std::cerr << "kestrune-preview: " << reason << "\n";
    return OptionsResult::Wrong;
}

bool LooksLikeImage(const std::string& word)
{
    std::error_code ignored; // what cannot be looked at is no image
    return word.starts_with('@') || word.find('/') != std::string::npos || word.find(".tar") != std::string::npos ||
           fs::exists(word, ignored);
}

bool IsMode(const std::string& word, bool isAnyMode)
{
    return std::find(std::begin(kModes), std::end(kModes), word) != std::end(kModes) ||
           (isAnyMode && !LooksLikeImage(word));
}

/// Divides the words into images, up to the first that is a mode, and modes.
OptionsResult DivideWords(const Arguments& given, Options& options)
{
    const auto isMode = [&given](const std::string& word) { return IsMode(word, given.isAnyMode); };
    const auto firstMode = std::find_if(given.words.begin() + 1, given.words.end(), isMode);
    options.words.assign(given.words.begin(), firstMode);
    options.request.modes.assign(firstMode, given.words.end());

    const std::string hint = "; modes are all, dev, pwd, 1 and 2, and come after the images";
    auto wrong = std::find_if_not(firstMode, given.words.end(), isMode);
    if (given.words.size() == 1)
        return Refuse("there is no MODE" + hint);
    if (firstMode == given.words.end())
        --wrong; // a mistyped mode, in all likelihood
    if (wrong != given.words.end())
        return Refuse("\"" + Printable(*wrong) + "\" is no MODE" + hint);
    return OptionsResult::Run;
}

/// A script that passes a variable which is not set must not get what leaving the option out gives.
std::string RefuseEmptyName(const std::string& name)
{
    return name.empty() ? "the name is empty" : "";
}

bool IsColourWanted(const std::string& when)
{
    if (when != "auto")
        return when == "always";
    const char* refusal = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) == 1 && (refusal == nullptr || *refusal == '\0') &&
           !(terminal != nullptr && std::string(terminal) == "dumb");
}

/// The programs are in the folder of this one, or where the installation or the build puts them.
fs::path FindOwnProgram(const char* name)
{
    std::error_code ignored; // without /proc the programs are not found, which is reported then
    const fs::path folder = fs::read_symlink("/proc/self/exe", ignored).parent_path();
    for (const char* place : {"", KESTRUNE_INSTALLED_PROGRAMS, "../../app/kestrune"}) {
        if (const fs::path program = folder / place / name; fs::exists(program))
            return program.lexically_normal();
    }
    return folder / name;
}

/// A name without a slash is searched for as a shell does.
fs::path FindInPath(const fs::path& name)
{
    const char* path = name.has_parent_path() || name.empty() ? nullptr : std::getenv("PATH");
    std::istringstream folders(path == nullptr ? "" : path);
    for (std::string folder; std::getline(folders, folder, ':');) {
        if (const fs::path program = fs::path(folder) / name; access(program.c_str(), X_OK) == 0)
            return program;
    }
    return name;
}

PreviewPrograms FindPrograms(const Arguments& given)
{
    const auto absolute = [](const fs::path& path) {
        return path.empty() ? path : fs::absolute(path).lexically_normal();
    };
    return {given.program.empty() ? FindOwnProgram("kestrune") : absolute(given.program),
            FindOwnProgram("kestrune-preview-steps"), absolute(FindInPath(given.emulator)), absolute(given.sysroot)};
}

/// "folder/" and "folder" are the same folder.
fs::path WithoutLastSlash(const fs::path& path)
{
    return path.has_filename() || !path.has_relative_path() ? path : path.parent_path();
}

/// A difference needs two upgrades, a preview one at most.
bool HasRightUpgrades(const Options& options)
{
    const std::size_t most = std::max(options.firmware.size(), options.table.size());
    return options.command == Command::Diff ? most == 2 : most <= 1;
}

OptionsResult Complete(const Arguments& given, Options& options)
{
    if (options.jsonFile == "-" && options.htmlFile == "-")
        return Refuse("only one of --json and --html can go to standard output");
    if (options.command == Command::Merge) {
        options.words = given.words;
        return OptionsResult::Run;
    }
    if (DivideWords(given, options) != OptionsResult::Run)
        return OptionsResult::Wrong;
    if (!HasRightUpgrades(options))
        return Refuse(options.command == Command::Diff ? "diff needs --firmware or --table twice, the old one first"
                                                       : "--firmware and --table are given once");
    options.withColour = IsColourWanted(given.colour);
    options.request.secrecy = given.isRevealed ? Secrecy::Revealed : Secrecy::Hidden;
    options.request.programs = FindPrograms(given);
    options.request.savedPhone = WithoutLastSlash(options.request.savedPhone);
    const PreviewPrograms& programs = options.request.programs;
    for (const fs::path& program : {programs.program, programs.steps, programs.emulator}) {
        if (!program.empty() && access(program.c_str(), X_OK) != 0)
            return Refuse("no program " + Printable(program.string()));
    }
    return OptionsResult::Run;
}

CLI::Option* AddFile(CLI::App& app, const char* name, std::filesystem::path& file, const char* description)
{
    return app.add_option(name, file, description)->option_text("FILE")->check(&RefuseEmptyName);
}

void DescribeOutputs(CLI::App& app, Options& options)
{
    AddFile(app, "--json", options.jsonFile,
            "write the preview or the report to this file as JSON; - is standard output");
    AddFile(app, "--html", options.htmlFile, "write it to this file as an HTML page; - is standard output");
    AddFile(app, "--pages", options.pages, "write a page for each phone to this folder; the report links to them")
        ->option_text("FOLDER");
}

/// Options of one image, which a difference does not have.
void DescribePreview(CLI::App& app, Arguments& given, Options& options)
{
    app.add_flag("--reports", options.withReports, "show what the program reported, too");
    app.add_option("--color", given.colour, "colour the text: auto, always or never")
        ->option_text("WHEN")
        ->check(CLI::IsMember({"auto", "always", "never"}));
    AddFile(app, "--expect", options.expectedFile, "compare with an approved preview, which --json wrote");
    AddFile(app, "--save-phone", options.request.savedPhone, "save the phone as it is after the run to a new folder")
        ->option_text("FOLDER");
}

void DescribeRuns(CLI::App& app, Arguments& given, Options& options)
{
    app.add_flag("--reveal-secrets", given.isRevealed, "show passwords, PINs and keys instead of hiding them");
    AddFile(app, "--jsonl", options.log, "write a line for each phone to this file, and go on where it ends");
    app.add_option("-j,--jobs", options.jobs,
                   "number of images to process in parallel (default: twice the number of processors)")
        ->option_text("NUMBER")
        ->check(CLI::Range(1u, 256u));
    app.add_option("--firmware", options.firmware, "replace the /phone of each image by that of this folder or archive")
        ->option_text("IMAGE")
        ->check(&RefuseEmptyName)
        ->allow_extra_args(false);
    app.add_option("--table", options.table, "replace the translation table of each phone by this file")
        ->option_text("FILE")
        ->check(&RefuseEmptyName)
        ->allow_extra_args(false);
    app.add_option("--program", given.program, "run this kestrune")->option_text("FILE");
    CLI::Option* emulator = AddFile(app, "--emulator", given.emulator, "start kestrune with this emulator")
                                ->option_text("PROGRAM")
                                ->needs("--program");
    AddFile(app, "--sysroot", given.sysroot, "give the emulator the libraries of this folder with -L")
        ->option_text("FOLDER")
        ->check(CLI::ExistingDirectory)
        ->needs(emulator);
    app.add_flag("--any-mode", given.isAnyMode, "allow modes other than all, dev, pwd, 1 and 2");
}

void Describe(CLI::App& app, Arguments& given, Options& options)
{
    const bool isMerge = options.command == Command::Merge;
    app.add_option(isMerge ? "LOG..." : "IMAGE... MODE", given.words,
                   isMerge ? "what --jsonl wrote"
                           : "backups of phones, folders of them, or @FILE with names; then the modes")
        ->option_text(" ")
        ->required();
    DescribeOutputs(app, options);
    if (!isMerge)
        DescribeRuns(app, given, options);
    if (options.command == Command::Preview)
        DescribePreview(app, given, options);
    app.set_version_flag("--version", "kestrune-preview " KESTRUNE_VERSION, "show the version and exit");
    app.set_help_flag("-h,--help", "show this help and exit");
    app.footer(
        "Several modes run one after another on one copy. Other commands: kestrune-preview merge LOG...,\n"
        "kestrune-preview diff --table OLD --table NEW IMAGE... MODE.\n"
        "Exit status: 0 all ends well, 1 a warning, 2 an error, 3 there is no preview; with --expect and diff: 0 the\n"
        "same, 1 not.");
}

Command CommandOf(int argumentCount, const char* const* arguments)
{
    const std::string_view word = argumentCount > 1 ? arguments[1] : "";
    if (word == "merge")
        return Command::Merge;
    return word == "diff" ? Command::Diff : Command::Preview;
}

} // namespace

OptionsResult ReadOptions(int argumentCount, const char* const* arguments, Options& options)
{
    CLI::App app("Shows what an upgrade will do to a phone: runs kestrune on a copy of its backup.",
                 "kestrune-preview");
    Arguments given;
    options.jobs = 2 * std::max(1u, std::thread::hardware_concurrency()); // the programs of a phone wait for each other
    options.command = CommandOf(argumentCount, arguments);
    const int skipped = options.command == Command::Preview ? 0 : 1;
    Describe(app, given, options);
    try {
        app.parse(argumentCount - skipped, arguments + skipped);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0)
            return Refuse(Printable(error.what()) + "; see kestrune-preview --help");
        (void)app.exit(error, std::cout, std::cerr); // help or the version
        return OptionsResult::Done;
    }
    return Complete(given, options);
}
