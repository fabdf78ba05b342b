// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "preview.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <tuple>

#include "output/outputFile.h"
#include "phoneImage/imageCopy.h"
#include "phoneImage/printable.h"
#include "phoneImage/scratch.h"
#include "phoneImage/toolError.h"
#include "shown/shownFiles.h"
#include "shown/shownReports.h"
#include "shown/shownTable.h"
#include "warnings/findWarnings.h"

namespace fs = std::filesystem;

namespace
{

std::vector<RunReports> RunModes(const std::vector<std::string>& modes, const StepsClient& steps)
{
    std::vector<RunReports> reports;
    for (const std::string& mode : modes) {
        ChildResult result = steps.RunProgram(mode);
        if (result.exitStatus != 0) // the program's own is always 0
            throw ToolError("the run of mode " + mode + " failed: exit status " + std::to_string(result.exitStatus));
        reports.push_back({mode, std::move(result.output), std::move(result.errors)});
    }
    return reports;
}

/// The phone between the passes; empty when a run of them did not come to its end.
std::vector<PassState> RunPassByPass(const std::vector<std::string>& modes, const StepsClient& steps,
                                     const fs::path& phone, const Snapshot& before)
{
    std::vector<PassState> states = {{std::string(), before}};
    for (const std::string& mode : modes) {
        const std::string prefix = modes.size() > 1 ? mode + ": " : std::string();
        const auto keep = [&](const std::string& pass) {
            states.push_back({prefix + pass, TakeSnapshot(phone, states.back().phone)});
        };
        if (!steps.RunSteps(mode, keep))
            return {};
    }
    return states;
}

PhoneLists Join(PhoneLists lists, const PhoneLists& more)
{
    lists.entries.insert(lists.entries.end(), more.entries.begin(), more.entries.end());
    lists.records.insert(lists.records.end(), more.records.begin(), more.records.end());
    return lists;
}

Snapshot WithoutFirmware(Snapshot phone)
{
    std::erase_if(phone, [](const auto& entry) { return entry.first.starts_with("/phone"); });
    return phone;
}

/// @return the warnings that the other list has not
std::vector<ShownWarning> Without(const std::vector<ShownWarning>& warnings, const std::vector<ShownWarning>& others)
{
    std::vector<ShownWarning> left;
    std::copy_if(warnings.begin(), warnings.end(), std::back_inserter(left), [&others](const ShownWarning& warning) {
        return std::none_of(others.begin(), others.end(), [&warning](const ShownWarning& other) {
            return std::tie(warning.rule, warning.place, warning.text) == std::tie(other.rule, other.place, other.text);
        });
    });
    return left;
}

/// Runs the modes on copies of the phone and keeps what was seen of them.
class PreviewRun
{
public:
    PreviewRun(const fs::path& image, const PreviewRequest& request, const Scratch& scratch)
        : request_(request), phone_(scratch.Path("phone"))
    {
        const fs::path trees = OpenImage(image, scratch.Path("archive"));
        ClearPhone(phone_);
        steps_.emplace(request_.programs, phone_);
        const fs::path copy = scratch.Path("copy");
        InstallFirmware(trees, copy);
        CopyPhone(copy, phone_);
        before_ = TakeSnapshot(phone_);
        lists_ = steps_->ReadLists();
        states_ = RunPassByPass(request_.modes, *steps_, phone_, before_);
        ClearPhone(phone_);
        MovePhone(copy, phone_);
        reports_ = RunModes(request_.modes, *steps_);
        after_ = TakeSnapshot(phone_, states_.empty() ? before_ : states_.back().phone);
        if (!states_.empty() && states_.back().phone != after_)
            states_.clear(); // the passes, run one by one, end with another phone than the program did
        SavePhone();
        (void)RunModes(request_.modes, *steps_); // its reports say nothing new
        afterSecondRun_ = TakeSnapshot(phone_, after_);
    }

    void Show(Preview& preview) const
    {
        const FileFormats formats(lists_);
        const PhoneLists allLists = Join(lists_, oldLists_);
        Secrets secrets(allLists, request_.secrecy);
        secrets.Learn(AllStates(), formats, *steps_);
        const std::vector<FileChange> changes = FindChanges(before_, after_, states_, formats);
        const std::vector<FileChange> secondRun = FindChanges(after_, afterSecondRun_, {}, formats);
        preview.arePassesKnown = !states_.empty();
        for (const PassState& state : states_)
            preview.passes.push_back(Printable(state.pass)); // the first, empty one counts nothing
        preview.files = ShowFiles(changes, secrets);
        preview.secondRun = ShowFiles(secondRun, secrets);
        preview.warnings = FindWarnings({.modes = request_.modes,
                                         .before = before_,
                                         .after = after_,
                                         .states = states_,
                                         .changes = changes,
                                         .secondRun = secondRun,
                                         .reports = reports_,
                                         .lists = lists_,
                                         .secrets = secrets});
        for (const RunReports& reports : reports_)
            preview.reports.push_back(ShowReports(reports, lists_.records, secrets));
        preview.records =
            ShowRecords(lists_.records, FindRecordOutcomes(lists_.records, reports_, before_, states_), secrets);
        const Snapshot& old = request_.firmware == nullptr ? before_ : old_;
        preview.forgotten = ShowForgotten(FindForgottenKeys(before_, old, lists_, formats), secrets);
    }

    /// Shows how the phone after this run differs from that after another one. The firmware's own files do not count.
    void ShowDifference(const PreviewRun& other, Preview& preview) const
    {
        const PhoneLists lists = Join(Join(lists_, oldLists_), other.lists_);
        const FileFormats formats(lists);
        Secrets secrets(lists, request_.secrecy);
        std::vector<const Snapshot*> states = AllStates();
        const std::vector<const Snapshot*> otherStates = other.AllStates();
        states.insert(states.end(), otherStates.begin(), otherStates.end());
        secrets.Learn(states, formats, *steps_);
        preview.files =
            ShowFiles(FindChanges(WithoutFirmware(after_), WithoutFirmware(other.after_), {}, formats), secrets);
    }

private:
    /// Copies the phone as it is before the run. What its lists named before the upgrade is secret too.
    void InstallFirmware(const fs::path& trees, const fs::path& copy)
    {
        if (request_.firmware == nullptr) {
            CopyPhone(trees, copy);
            return;
        }
        CopyPhone(trees, phone_);
        oldLists_ = steps_->ReadLists();
        old_ = TakeSnapshot(phone_);
        ClearPhone(phone_);
        request_.firmware->Install(trees, copy);
    }

    void SavePhone() const
    {
        if (request_.savedPhone.empty())
            return;
        RequireNewFolder(request_.savedPhone);
        Temporary folder(request_.savedPhone, Temporary::Kind::Folder); // a copy that fails leaves nothing
        CopyPhone(phone_, folder.Path());
        folder.RenameTo(request_.savedPhone);
    }

    std::vector<const Snapshot*> AllStates() const
    {
        std::vector<const Snapshot*> phones = {&before_};
        for (const PassState& state : states_)
            phones.push_back(&state.phone);
        phones.push_back(&after_);
        phones.push_back(&afterSecondRun_);
        return phones;
    }

    const PreviewRequest& request_;
    fs::path phone_;
    std::optional<StepsClient> steps_; ///< the sandbox in which everything happens
    PhoneLists lists_;
    PhoneLists oldLists_; ///< of the phone before the upgrade was installed; empty without one
    Snapshot old_;
    Snapshot before_;
    Snapshot after_;
    Snapshot afterSecondRun_;
    std::vector<PassState> states_;
    std::vector<RunReports> reports_;
};

/// The last name of a path: "phone-7.tar.gz", or "phone-7" for "backups/phone-7/".
std::string NameOf(const fs::path& image)
{
    const fs::path name = image.has_filename() ? image.filename() : image.parent_path().filename();
    return Printable(name.string());
}

/// The same image has to give the same error wherever it and our copy of it are.
std::string WithoutPath(std::string text, const std::string& path)
{
    for (std::size_t at = text.find(path); at != std::string::npos; at = text.find(path, at))
        text.erase(at, path.size());
    return text;
}

/// Makes a preview; a failure becomes its error.
///
/// @param show  called with a scratch folder for the phone's copies, and the preview
template <typename Show>
Preview MakeShown(const fs::path& image, const PreviewRequest& request, Show show)
{
    Preview preview;
    preview.image = NameOf(image);
    for (const std::string& mode : request.modes)
        preview.modes.push_back(Printable(mode));
    try {
        const Scratch scratch;
        try {
            show(scratch, preview);
        } catch (const std::exception& error) {
            preview.error = Printable(WithoutPath(WithoutPath(error.what(), scratch.Path("")), image / ""));
        }
    } catch (const std::exception& error) {
        preview.error = Printable(error.what());
    }
    return preview;
}

} // namespace

Preview MakePreview(const fs::path& image, const PreviewRequest& request)
{
    return MakeShown(image, request, [&](const Scratch& scratch, Preview& preview) {
        PreviewRun(image, request, scratch).Show(preview);
    });
}

Preview MakeDifference(const fs::path& image, const PreviewRequest& request, const Firmware& second)
{
    return MakeShown(image, request, [&](const Scratch& scratch, Preview& preview) {
        PreviewRequest secondRequest = request;
        secondRequest.firmware = &second;
        const PreviewRun firstRun(image, request, scratch);
        const Scratch secondScratch;
        const PreviewRun secondRun(image, secondRequest, secondScratch);
        Preview one;
        Preview two;
        firstRun.Show(one);
        secondRun.Show(two);
        firstRun.ShowDifference(secondRun, preview);
        preview.warnings = Without(two.warnings, one.warnings);
        preview.gone = Without(one.warnings, two.warnings);
    });
}
