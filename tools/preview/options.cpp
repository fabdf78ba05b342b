// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <thread>
#include <unistd.h>

#include "phoneImage/printable.h"

namespace fs = std::filesystem;

namespace
{

constexpr const char* kModes[] = {"all", "dev", "pwd", "1", "2"};

/// Further arguments are images up to the first that is a mode of the program, or that looks like no image.
bool IsImage(const std::string& argument)
{
    if (std::find(std::begin(kModes), std::end(kModes), argument) != std::end(kModes))
        return false;
    std::error_code ignored; // what cannot be looked at is no image
    return argument.find('/') != std::string::npos || argument.find(".tar") != std::string::npos ||
           fs::exists(argument, ignored);
}

void SortArguments(const std::vector<std::string>& arguments, Options& options)
{
    auto next = arguments.begin();
    do
        options.images.emplace_back(*next++);
    while (next != arguments.end() && IsImage(*next));
    options.request.modes.assign(next, arguments.end());
}

/// An image behind the modes would be taken for a mode that does next to nothing.
bool AreModes(const std::vector<std::string>& modes)
{
    if (modes.empty())
        std::cerr << "kestrune-preview: no MODE given; the program's own are all, dev, pwd, 1 and 2\n";
    for (const std::string& mode : modes) {
        if (IsImage(mode)) {
            std::cerr << "kestrune-preview: " << Printable(mode) << " is no MODE; IMAGEs stand before the modes\n";
            return false;
        }
    }
    return !modes.empty();
}

/// An empty name, as an unset variable of a script gives it, must not pass for an option that was left out.
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

/// The programs stand beside this one, or where the build puts them.
PreviewPrograms FindPrograms(const fs::path& wanted)
{
    std::error_code ignored; // without /proc the programs are not found, which is told then
    const fs::path folder = fs::read_symlink("/proc/self/exe", ignored).parent_path();
    fs::path program = wanted;
    if (program.empty())
        program = fs::exists(folder / "kestrune") ? folder / "kestrune" : folder / "../../app/kestrune/kestrune";
    return {fs::absolute(program).lexically_normal(), folder / "kestrune-preview-steps"};
}

bool AreThere(const PreviewPrograms& programs)
{
    for (const fs::path& program : {programs.program, programs.steps}) {
        if (access(program.c_str(), X_OK) != 0) {
            std::cerr << "kestrune-preview: no program " << Printable(program.string()) << "\n";
            return false;
        }
    }
    return true;
}

} // namespace

OptionsResult ReadOptions(int argumentCount, const char* const* arguments, Options& options)
{
    CLI::App app("Shows what an upgrade will do to a phone: runs kestrune on a copy of its backup and tells what "
                 "changed. Exit status: 0 nothing changes, 2 something does, 1 error.",
                 "kestrune-preview");
    std::vector<std::string> words;
    std::string colour = "auto";
    fs::path program;
    bool isRevealed = false;
    options.jobs = std::max(1u, std::thread::hardware_concurrency());
    app.add_option("IMAGE... MODE...", words,
                   "backups of phones (folders, .tar, .tar.gz), then the modes to run one after another")
        ->required();
    app.add_flag("--reports", options.withReports, "show what the program reported as well");
    app.add_flag("--reveal-secrets", isRevealed, "show passwords, PINs and keys instead of hiding them");
    app.add_option("--color", colour, "colour the text: auto, always or never")
        ->check(CLI::IsMember({"auto", "always", "never"}));
    app.add_option("--json", options.jsonFile, "write the preview as JSON to this file, - for standard output")
        ->check(&RefuseEmptyName);
    app.add_option("--html", options.htmlFile, "write the preview as one HTML page to this file")
        ->check(&RefuseEmptyName);
    app.add_option("--expect", options.expectedFile, "compare with the JSON of an approved preview; 0 equal, 1 not")
        ->check(&RefuseEmptyName);
    app.add_option("--jobs", options.jobs, "so many images at once")->check(CLI::Range(1u, 256u));
    app.add_option("--program", program, "the kestrune to run");
    app.add_option("--save-phone", options.request.savedPhone, "make this folder with the phone as it is after the run")
        ->check(&RefuseEmptyName);
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::ParseError& error) {
        return app.exit(error, std::cout, std::cerr) == 0 ? OptionsResult::Done : OptionsResult::Wrong;
    }
    SortArguments(words, options);
    options.withColour = IsColourWanted(colour);
    options.request.secrecy = isRevealed ? Secrecy::Revealed : Secrecy::Hidden;
    options.request.programs = FindPrograms(program);
    if (!AreModes(options.request.modes))
        return OptionsResult::Wrong;
    if (options.images.size() > 1 && !options.request.savedPhone.empty()) {
        std::cerr << "kestrune-preview: --save-phone takes one IMAGE\n";
        return OptionsResult::Wrong;
    }
    return AreThere(options.request.programs) ? OptionsResult::Run : OptionsResult::Wrong;
}
