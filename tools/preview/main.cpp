// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include <algorithm>
#include <clocale>
#include <csignal>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>

#include "expectation.h"
#include "fleet.h"
#include "options.h"
#include "output/htmlOutput.h"
#include "output/jsonOutput.h"
#include "output/outputFile.h"
#include "output/tableOutput.h"
#include "output/textOutput.h"
#include "phoneImage/printable.h"
#include "phoneImage/sandbox.h"
#include "phoneImage/scratch.h"
#include "phoneImage/toolError.h"

namespace
{

constexpr int kEndsWell = 0;
constexpr int kNeedsCare = 1; ///< there is a warning; with --expect: it is not as approved
constexpr int kFails = 2;     ///< there is an error, or no preview of one of several images
constexpr int kNotDone = 3;   ///< there is no preview

/// Finds out what would stop the run at its end before the work is done.
void RequireOutputs(const Options& options)
{
    for (const std::filesystem::path& path : {options.jsonFile, options.htmlFile}) {
        if (!path.empty() && path != "-")
            RequireWritable(path);
    }
    if (!options.request.savedPhone.empty())
        RequireNewFolder(options.request.savedPhone);
}

/// Writes a document to where it was asked for.
///
/// @param path  "-" for standard output; empty for none
/// @param file  receives the file that is still to be committed, if there is one
void Write(const std::filesystem::path& path, const std::string& text, Readers readers, std::optional<OutputFile>& file)
{
    if (path == "-")
        std::cout << text;
    else if (!path.empty())
        file.emplace(path, text, readers);
}

void WriteDocuments(const Options& options, const std::vector<Preview>& previews)
{
    const bool isRevealed = options.request.secrecy == Secrecy::Revealed;
    const Readers readers = isRevealed ? Readers::Owner : Readers::AsBefore;
    std::optional<OutputFile> jsonFile;
    std::optional<OutputFile> htmlFile;
    if (!options.jsonFile.empty()) {
        const nlohmann::ordered_json document = ToJson(previews, {options.withReports, isRevealed});
        Write(options.jsonFile, document.dump(2) + "\n", readers, jsonFile);
    }
    if (!options.htmlFile.empty())
        Write(options.htmlFile, HtmlPage(previews, options.withReports), readers, htmlFile);
    if (jsonFile)
        jsonFile->Commit();
    if (htmlFile)
        htmlFile->Commit();
}

void WriteToTerminal(const Options& options, const std::vector<Preview>& previews)
{
    for (const Preview& preview : previews) {
        if (!preview.error.empty())
            std::cerr << "kestrune-preview: " << preview.image << ": " << preview.error << "\n";
    }
    if (options.jsonFile == "-" || options.htmlFile == "-")
        return;
    if (previews.size() > 1)
        WriteTable(std::cout, previews);
    else if (previews.front().error.empty())
        WriteText(std::cout, previews.front(), {options.withColour, options.withReports});
}

int StatusOf(const std::vector<Preview>& previews)
{
    Severity worst = Severity::Note;
    if (std::all_of(previews.begin(), previews.end(), [](const Preview& preview) { return !preview.error.empty(); }))
        return kNotDone;
    for (const Preview& preview : previews)
        worst = std::max(worst, WorstOf(preview).value_or(Severity::Note));
    if (worst == Severity::Error)
        return kFails;
    return worst == Severity::Warning ? kNeedsCare : kEndsWell;
}

int CompareWithApproved(const Approved& approved, const std::vector<Preview>& previews)
{
    const std::vector<std::string> differences = DifferencesFrom(approved, previews);
    for (const std::string& difference : differences)
        std::cerr << "kestrune-preview: " << difference << "\n";
    return differences.empty() ? kEndsWell : kNeedsCare;
}

int Run(const Options& options)
{
    RequireOutputs(options);
    Approved approved; // read before a new JSON takes its place
    if (!options.expectedFile.empty())
        approved = ReadApproved(options.expectedFile, options.request.secrecy);
    RemoveScratchOfEndedProcesses();
    RequireSandbox();

    const Firmware firmware(options.firmware, options.table);
    PreviewRequest request = options.request;
    request.firmware = firmware.IsNone() ? nullptr : &firmware;
    const std::vector<Preview> previews = MakePreviews(options.images, request, options.jobs);
    WriteToTerminal(options, previews);
    const int status = approved == nullptr ? StatusOf(previews) : CompareWithApproved(approved, previews);
    WriteDocuments(options, previews);
    std::cout.flush();
    if (!std::cout)
        throw ToolError("cannot write to standard output");
    return status;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    (void)std::setlocale(LC_CTYPE, "C.UTF-8"); // names in archives; without it those outside of ASCII are refused
    (void)std::signal(SIGPIPE, SIG_IGN);       // the write fails instead, which is reported
    (void)std::signal(SIGXFSZ, SIG_IGN);
    try {
        RemoveTemporariesWhenInterrupted(); // copies of phones hold secrets
        Options options;
        switch (ReadOptions(argumentCount, arguments, options)) {
        case OptionsResult::Done:
            return 0;
        case OptionsResult::Wrong:
            return kNotDone;
        case OptionsResult::Run:
            return Run(options);
        }
    } catch (const std::exception& error) {
        std::cerr << "kestrune-preview: " << Printable(error.what()) << "\n";
    }
    return kNotDone;
}
