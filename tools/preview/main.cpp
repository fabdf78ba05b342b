// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include <algorithm>
#include <clocale>
#include <csignal>
#include <iostream>
#include <malloc.h>
#include <nlohmann/json.hpp>
#include <optional>

#include "descriptor.h"
#include "expectation.h"
#include "fingerprint.h"
#include "fleet.h"
#include "fleet/fleetOutput.h"
#include "options.h"
#include "output/htmlOutput.h"
#include "output/jsonOutput.h"
#include "output/outputFile.h"
#include "output/textOutput.h"
#include "phoneImage/imageNames.h"
#include "phoneImage/printable.h"
#include "phoneImage/sandbox.h"
#include "phoneImage/scratch.h"
#include "phoneImage/toolError.h"

namespace fs = std::filesystem;

namespace
{

constexpr int kEndsWell = 0;
constexpr int kNeedsCare = 1; ///< there is a warning; with --expect: it is not as approved
constexpr int kFails = 2;     ///< there is an error, or no preview of one of several images
constexpr int kNotDone = 3;   ///< there is no preview

/// Finds out what would stop the run at its end before the work is done.
void RequireOutputs(const Options& options)
{
    for (const fs::path& path : {options.jsonFile, options.htmlFile}) {
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
void Write(const fs::path& path, const std::string& text, Readers readers, std::optional<OutputFile>& file)
{
    if (path == "-")
        std::cout << text;
    else if (!path.empty())
        file.emplace(path, text, readers);
}

/// @param isRevealed          whether the documents contain secrets
/// @param makeJson, makePage  called only when the document was asked for
template <typename MakeJson, typename MakePage>
void WriteDocuments(const Options& options, bool isRevealed, MakeJson makeJson, MakePage makePage)
{
    const Readers readers = isRevealed ? Readers::Owner : Readers::AsBefore;
    std::optional<OutputFile> jsonFile;
    std::optional<OutputFile> htmlFile;
    if (!options.jsonFile.empty())
        Write(options.jsonFile, makeJson().dump(2) + "\n", readers, jsonFile);
    if (!options.htmlFile.empty())
        Write(options.htmlFile, makePage(), readers, htmlFile);
    if (jsonFile)
        jsonFile->Commit();
    if (htmlFile)
        htmlFile->Commit();
    std::cout.flush();
    if (!std::cout)
        throw ToolError("cannot write to standard output");
}

bool IsTerminalFree(const Options& options)
{
    return options.jsonFile != "-" && options.htmlFile != "-";
}

int StatusOf(std::optional<Severity> worst)
{
    if (worst == Severity::Error)
        return kFails;
    return worst == Severity::Warning ? kNeedsCare : kEndsWell;
}

int CompareWithApproved(const Approved& approved, const Preview& preview)
{
    const std::vector<std::string> differences = DifferencesFrom(approved, {preview});
    for (const std::string& difference : differences)
        std::cerr << "kestrune-preview: " << difference << "\n";
    return differences.empty() ? kEndsWell : kNeedsCare;
}

int PreviewOne(const std::string& image, const Options& options, const PreviewRequest& request,
               const Approved& approved)
{
    const Preview preview = MakePreview(image, request);
    if (!preview.error.empty())
        std::cerr << "kestrune-preview: " << preview.image << ": " << preview.error << "\n";
    else if (IsTerminalFree(options))
        WriteText(std::cout, preview, {options.withColour, options.withReports});
    const int status = approved != nullptr     ? CompareWithApproved(approved, preview)
                       : preview.error.empty() ? StatusOf(WorstOf(preview))
                                               : kNotDone;
    const bool isRevealed = request.secrecy == Secrecy::Revealed;
    WriteDocuments(
        options, isRevealed,
        [&] {
            return ToJson({preview}, {options.withReports, isRevealed});
        },
        [&] { return HtmlPage(preview, options.withReports); });
    return status;
}

int WriteReport(const Options& options, const FleetReport& report)
{
    if (IsTerminalFree(options))
        WriteFleetText(std::cout, report);
    WriteDocuments(
        options, report.isRevealed, [&] { return FleetJson(report); },
        [&] { return FleetPage(report, options.pages, FolderOf(options.htmlFile.string())); });
    const auto isShown = [](const PhoneRow& row) { return row.error.empty(); };
    if (std::none_of(report.phones.begin(), report.phones.end(), isShown))
        return kNotDone;
    if (report.isDifference) {
        if (!std::all_of(report.phones.begin(), report.phones.end(), isShown))
            return kFails;
        return report.places.empty() && report.rules.empty() ? kEndsWell : kNeedsCare;
    }
    if (report.byEnding[static_cast<std::size_t>(Ending::Fail)] != 0)
        return kFails;
    return report.byEnding[static_cast<std::size_t>(Ending::Care)] != 0 ? kNeedsCare : kEndsWell;
}

FleetOptions FleetOptionsOf(const Options& options, const PreviewRequest& request)
{
    std::vector<fs::path> upgrade = {request.programs.program, request.programs.steps};
    upgrade.insert(upgrade.end(), options.firmware.begin(), options.firmware.end());
    upgrade.insert(upgrade.end(), options.table.begin(), options.table.end());
    FleetOptions fleet;
    fleet.makePreview = [&request](const std::string& image) { return MakePreview(image, request); };
    fleet.modes = request.modes;
    fleet.isRevealed = request.secrecy == Secrecy::Revealed;
    fleet.withReports = options.withReports;
    fleet.jobs = options.jobs;
    fleet.log = options.log;
    fleet.pages = options.pages;
    fleet.upgrade = FingerprintOf(upgrade);
    if (!options.pages.empty())
        fs::create_directories(options.pages);
    return fleet;
}

/// @param number  0 for the first upgrade of a difference, or the only one
Firmware FirmwareOf(const Options& options, std::size_t number)
{
    const auto choose = [number](const std::vector<fs::path>& paths) {
        return paths.empty() ? fs::path() : paths[std::min(number, paths.size() - 1)];
    };
    return {choose(options.firmware), choose(options.table)};
}

int RunDiff(const Options& options, const std::vector<std::string>& images)
{
    const Firmware first = FirmwareOf(options, 0);
    const Firmware second = FirmwareOf(options, 1);
    PreviewRequest request = options.request;
    request.firmware = &first;
    FleetOptions fleet = FleetOptionsOf(options, request);
    fleet.isDifference = true;
    fleet.makePreview = [&](const std::string& image) { return MakeDifference(image, request, second); };
    return WriteReport(options, RunFleet(images, fleet, std::cerr));
}

int RunPreview(const Options& options, const std::vector<std::string>& images)
{
    Approved approved; // read before a new JSON takes its place
    if (!options.expectedFile.empty())
        approved = ReadApproved(options.expectedFile, options.request.secrecy);
    const Firmware firmware = FirmwareOf(options, 0);
    PreviewRequest request = options.request;
    request.firmware = firmware.IsNone() ? nullptr : &firmware;
    if (images.size() > 1 || !options.log.empty() || !options.pages.empty()) {
        if (approved != nullptr || !request.savedPhone.empty())
            throw ToolError("--expect and --save-phone take one IMAGE");
        return WriteReport(options, RunFleet(images, FleetOptionsOf(options, request), std::cerr));
    }
    return PreviewOne(images.front(), options, request, approved);
}

int Run(const Options& options)
{
    RequireOutputs(options);
    if (options.command == Command::Merge)
        return WriteReport(options, MergeLogs({options.words.begin(), options.words.end()}));
    RemoveScratchOfEndedProcesses();
    RequireSandbox();
    const std::vector<std::string> images = FindImages(options.words);
    return options.command == Command::Diff ? RunDiff(options, images) : RunPreview(options, images);
}

} // namespace

int main(int argumentCount, char** arguments)
{
    (void)std::setlocale(LC_CTYPE, "C.UTF-8"); // names in archives; without it those outside of ASCII are refused
    (void)std::signal(SIGPIPE, SIG_IGN);       // the write fails instead, which is reported
    (void)std::signal(SIGXFSZ, SIG_IGN);
    (void)mallopt(M_ARENA_MAX, 1); // one heap for each thread would keep what only one phone needed
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
