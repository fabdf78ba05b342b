// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include <clocale>
#include <csignal>
#include <iostream>
#include <nlohmann/json.hpp>

#include "expectation.h"
#include "fleet.h"
#include "options.h"
#include "output/htmlOutput.h"
#include "output/jsonOutput.h"
#include "output/tableOutput.h"
#include "output/textOutput.h"
#include "phoneImage/printable.h"
#include "phoneImage/scratch.h"
#include "phoneImage/toolError.h"

namespace
{

constexpr int kNothingChanges = 0;
constexpr int kError = 1;
constexpr int kSomethingChanges = 2;

void WriteFiles(const Options& options, const std::vector<Preview>& previews)
{
    const Readers readers = options.request.secrecy == Secrecy::Revealed ? Readers::Owner : Readers::AsUmaskSays;
    if (!options.jsonFile.empty()) {
        const std::string text = ToJson(previews, options.withReports).dump(2) + "\n";
        if (options.jsonFile == "-")
            std::cout << text;
        else
            WriteWhole(options.jsonFile, text, readers);
    }
    if (!options.htmlFile.empty())
        WriteWhole(options.htmlFile, HtmlPage(previews, options.withReports), readers);
}

void WriteToTerminal(const Options& options, const std::vector<Preview>& previews)
{
    if (options.jsonFile == "-")
        return;
    if (previews.size() > 1)
        WriteTable(std::cout, previews);
    else
        WriteText(std::cout, previews.front(), {options.withColour, options.withReports});
}

int StatusOf(const std::vector<Preview>& previews)
{
    int status = kNothingChanges;
    for (const Preview& preview : previews) {
        if (!preview.error.empty())
            return kError;
        if (!preview.files.empty())
            status = kSomethingChanges;
    }
    return status;
}

int CompareWithApproved(const Options& options, const std::vector<Preview>& previews)
{
    const std::vector<std::string> differences = CompareWithExpected(previews, options.expectedFile);
    for (const std::string& difference : differences)
        std::cerr << "kestrune-preview: " << difference << "\n";
    return differences.empty() ? kNothingChanges : kError;
}

int Run(const Options& options)
{
    RemoveScratchOfEndedProcesses();
    const std::vector<Preview> previews = MakePreviews(options.images, options.request, options.jobs);
    WriteToTerminal(options, previews);
    int status = StatusOf(previews);
    if (!options.expectedFile.empty() && status != kError)
        status = CompareWithApproved(options, previews); // before a new JSON takes the place of the approved one
    WriteFiles(options, previews);
    std::cout.flush();
    if (!std::cout)
        throw ToolError("cannot write to standard output");
    return status;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    (void)std::setlocale(LC_CTYPE, "C.UTF-8"); // names in archives; without it those outside of ASCII are refused
    (void)std::signal(SIGPIPE, SIG_IGN);       // a program that ends early is seen at its write
    try {
        RemoveTemporariesWhenInterrupted(); // copies of phones hold secrets
        Options options;
        switch (ReadOptions(argumentCount, arguments, options)) {
        case OptionsResult::Done:
            return 0;
        case OptionsResult::Wrong:
            return kError;
        case OptionsResult::Run:
            return Run(options);
        }
    } catch (const std::exception& error) {
        std::cerr << "kestrune-preview: " << Printable(error.what()) << "\n";
    }
    return kError;
}
