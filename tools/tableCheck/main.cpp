// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// kestrune-table-check: reports what a translation table will do on the phones, before it is shipped.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <iostream>

#include "checkImages.h"
#include "phoneImage/imageNames.h"
#include "phoneImage/printable.h"
#include "phoneImage/scratch.h"
#include "phoneImage/temporary.h"
#include "phoneImage/toolError.h"
#include "report.h"
#include "rules.h"

namespace
{

/// Exit status when nothing could be checked.
constexpr int kNotChecked = 3;

constexpr char kName[] = "kestrune-table-check: "; ///< begins each message

struct Options {
    TableCheckInput input;
    std::vector<std::string> roots;
    std::string firmware;
    std::string format = "text";
    std::string least = "note";
    std::string explained;
    bool listRules = false;
};

void Describe(CLI::App& app, Options& options)
{
    app.add_option("TABLE", options.input.table, "the translation table");
    CLI::Option* root =
        app.add_option(
               "--root", options.roots,
               "phones to check against: folders with config, phone and tmp, .tar and .tar.gz archives, folders "
               "that contain such images, @LIST for a file with a name per line")
            ->type_name("IMAGE");
    app.add_option("--firmware", options.firmware, "folder or archive whose phone replaces that of each image")
        ->check(CLI::ExistingPath.description(""))
        ->needs(root);
    app.add_option("--entry-list", options.input.entryList, "list of enciphered entries to use instead of the image's")
        ->type_name("FILE")
        ->check(CLI::ExistingFile.description(""));
    app.add_option("--format", options.format, "format of the report")
        ->type_name("FORMAT")
        ->check(CLI::IsMember({"text", "json", "github"}));
    app.add_option("--severity", options.least, "the least severity to report")
        ->type_name("SEVERITY")
        ->check(CLI::IsMember({"note", "warning", "error"}));
    app.add_option("--explain", options.explained, "say what a rule means, such as KT004")->type_name("RULE");
    app.add_flag("--list-rules", options.listRules, "list all rules");
    app.set_version_flag("--version", "kestrune-table-check " KESTRUNE_VERSION, "show the version and exit");
    app.footer("Exit status: 2 with errors, 1 with warnings, 0 without either, 3 when nothing could be checked.");
}

int Explain(const std::string& number)
{
    const Rule* rule = FindRule(number);
    if (rule == nullptr)
        throw ToolError("there is no rule \"" + number + '"');
    std::cout << Explanation(*rule);
    return 0;
}

std::string Report(const Options& options, const ImagesResult& result)
{
    if (options.format == "json")
        return JsonReport(options.input.table, result);
    if (options.format == "github")
        return GithubReport(options.input.table, result);
    return TextReport(options.input.table, result);
}

int Check(const Options& options)
{
    ImagesResult result = CheckImages(options.input, FindImages(options.roots), options.firmware);
    for (const FailedImage& failed : result.failed)
        std::cerr << kName << Printable(failed.image + ": " + failed.reason) << '\n';
    if (result.images == 0 && !result.failed.empty())
        return kNotChecked;
    KeepFrom(SeverityNamed(options.least).value(), result.findings); // the option takes no other word
    std::cout << Report(options, result) << std::flush;
    if (!std::cout)
        throw ToolError("the report cannot be written");
    return ExitStatus(result);
}

int Run(int argumentCount, char** arguments)
{
    Options options;
    CLI::App app("Says what a translation table will do on the phones, before it is shipped.", "kestrune-table-check");
    Describe(app, options);
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kNotChecked;
    }
    if (options.listRules) {
        std::cout << RuleList();
        return 0;
    }
    if (!options.explained.empty())
        return Explain(options.explained);
    if (options.input.table.empty() && options.roots.size() > 1) { // "--root IMAGE... TABLE": the option took all words
        options.input.table = options.roots.back();
        options.roots.pop_back();
    }
    if (options.input.table.empty())
        throw ToolError("TABLE is required, see --help");
    return Check(options);
}

} // namespace

int main(int argumentCount, char** arguments)
{
    RemoveTemporariesWhenInterrupted();
    RemoveScratchOfEndedProcesses();
    try {
        return Run(argumentCount, arguments);
    } catch (const std::exception& error) {
        std::cerr << kName << Printable(error.what()) << '\n';
        return kNotChecked;
    }
}
