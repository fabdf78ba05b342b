// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fleet.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <set>
#include <thread>

#include "fleet/fleetCounter.h"
#include "fleet/fleetLog.h"
#include "fleet/fleetOutput.h"
#include "fleet/phoneLine.h"
#include "output/htmlOutput.h"
#include "output/progressBar.h"
#include "phoneImage/printable.h"
#include "phoneImage/toolError.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace
{

json FirstLine(const FleetOptions& options)
{
    std::vector<std::string> modes;
    std::transform(options.modes.begin(), options.modes.end(), std::back_inserter(modes),
                   [](const std::string& mode) { return Printable(mode); });
    return {{"format", "kestrune-preview-fleet"},
            {"version", kFleetLogVersion},
            {"madeBy", "kestrune-preview " KESTRUNE_VERSION},
            {"modes", modes},
            {"difference", options.isDifference},
            {"revealed", options.isRevealed},
            {"upgrade", options.upgrade}};
}

FleetReport Finish(FleetCounter& counter, const json& first)
{
    FleetReport report = counter.Take();
    report.modes = first.at("modes").get<std::vector<std::string>>();
    report.isDifference = first.at("difference").get<bool>();
    report.isRevealed = first.at("revealed").get<bool>();
    return report;
}

/// What the threads share. Each function is called by one of them at a time.
class Fleet
{
public:
    Fleet(const FleetOptions& options, std::ostream& errors) : options_(options), errors_(errors)
    {
        if (options.log.empty())
            return;
        log_.emplace(options.log, FirstLine(options), ReadersOfOutput(), [this](const json& line) {
            counter_.Add(line);
            if (line.contains("image"))
                done_.insert(line["image"].get<std::string>());
        });
    }

    bool IsDone(const std::string& image) const { return done_.count(Printable(image)) != 0; }

    /// Writes the page before the line: a phone with a line has a page.
    void Add(const std::string& image, const Preview& preview)
    {
        const std::string name = Printable(image);
        if (!preview.error.empty())
            errors_ << "kestrune-preview: " << name << ": " << preview.error << std::endl;
        else if (!options_.pages.empty())
            OutputFile(options_.pages / PageName(name), HtmlPage(preview, options_.withReports), ReadersOfOutput())
                .Commit();
        json line = PhoneLine(name, preview);
        if (const json table = TableOf(preview); !table.empty()) {
            bool isNew = false;
            line["table"] = counter_.NumberOf(table, isNew);
            if (isNew)
                AddLine({{"records", table}});
        }
        AddLine(line);
    }

    FleetReport Report() { return Finish(counter_, FirstLine(options_)); }

private:
    Readers ReadersOfOutput() const { return options_.isRevealed ? Readers::Owner : Readers::AsBefore; }

    void AddLine(const json& line)
    {
        if (log_)
            log_->Append(line);
        counter_.Add(line);
    }

    const FleetOptions& options_;
    std::ostream& errors_;
    FleetCounter counter_;
    std::set<std::string> done_; ///< images that the log has
    std::optional<FleetLog> log_;
};

} // namespace

FleetReport RunFleet(const std::vector<std::string>& images, const FleetOptions& options, std::ostream& errors)
{
    Fleet fleet(options, errors);
    std::vector<std::string> toDo;
    std::copy_if(images.begin(), images.end(), std::back_inserter(toDo),
                 [&](const std::string& image) { return !fleet.IsDone(image); });
    const ProgressBar bar(toDo.size());
    std::mutex mutex;
    std::size_t done = 0;
    std::exception_ptr failure;
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        for (std::size_t own = next++; own < toDo.size(); own = next++) {
            const Preview preview = options.makePreview(toDo[own]);
            const std::lock_guard lock(mutex);
            if (failure)
                return; // a line after one that was cut would spoil the log
            try {
                fleet.Add(toDo[own], preview);
                bar.Show(++done);
            } catch (...) {
                failure = std::current_exception();
                next = toDo.size();
            }
        }
    };
    std::vector<std::thread> workers;
    for (std::size_t i = 0; i < std::min<std::size_t>(options.jobs, toDo.size()); ++i)
        workers.emplace_back(work);
    for (std::thread& worker : workers)
        worker.join();
    if (failure)
        std::rethrow_exception(failure);
    return fleet.Report();
}

FleetReport MergeLogs(const std::vector<fs::path>& logs)
{
    FleetCounter counter;
    json first;
    for (const fs::path& log : logs) {
        counter.BeginLog();
        const json own = ReadFleetLog(log, [&counter](const json& line) { counter.Add(line); });
        if (!first.is_null() && own != first)
            throw ToolError(log.string() + " is of another run than " + logs.front().string());
        first = own;
    }
    return Finish(counter, first);
}
