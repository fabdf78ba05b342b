// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// kestrune-table-check: reports what a translation table will do on the phones, before it is shipped.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <iostream>

#include "checkTable.h"
#include "phoneImage/printable.h"
#include "phoneImage/toolError.h"
#include "report.h"
#include "rules.h"

namespace
{

/// Exit status when nothing could be checked.
constexpr int kNotChecked = 3;

struct Options {
    TableCheckInput input;
    std::string format = "text";
    std::string least = "note";
    std::string explained;
    bool listRules = false;
};

void Describe(CLI::App& app, Options& options)
{
    app.add_option("TABLE", options.input.table, "the translation table");
    app.add_option("--root", options.input.image, "phone to check against: a folder with its config, phone and tmp")
        ->type_name("IMAGE")
        ->check(CLI::ExistingDirectory.description(""));
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

std::string Report(const Options& options, const Findings& findings)
{
    if (options.format == "json")
        return JsonReport(options.input.table, findings);
    if (options.format == "github")
        return GithubReport(options.input.table, findings);
    return TextReport(options.input.table, findings);
}

Severity SeverityNamed(const std::string& name)
{
    if (name == "error")
        return Severity::Error;
    return name == "warning" ? Severity::Warning : Severity::Note;
}

int Check(const Options& options)
{
    Findings findings = CheckTable(options.input);
    KeepFrom(SeverityNamed(options.least), findings);
    std::cout << Report(options, findings) << std::flush;
    if (!std::cout)
        throw ToolError("the report cannot be written");
    return ExitStatus(findings);
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
    if (options.input.table.empty())
        throw ToolError("TABLE is required, see --help");
    return Check(options);
}

} // namespace

int main(int argumentCount, char** arguments)
{
    try {
        return Run(argumentCount, arguments);
    } catch (const std::exception& error) {
        std::cerr << "kestrune-table-check: " << Printable(error.what()) << '\n';
        return kNotChecked;
    }
}
