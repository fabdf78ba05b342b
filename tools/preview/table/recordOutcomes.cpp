// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "recordOutcomes.h"

#include <algorithm>

#include "iniText.h"
#include "phoneImage/normalPath.h"
#include "runSequence.h"

namespace
{

const Snapshot& PhoneBeforeTable(const Snapshot& before, const std::vector<PassState>& states)
{
    const auto table = std::find_if(states.begin(), states.end(),
                                    [](const PassState& state) { return state.pass.ends_with(kTablePass); });
    return table == states.end() ? before : std::prev(table)->phone; // the first state is of no pass
}

/// The configuration files as the records of one run find them.
class FilesInRun
{
public:
    explicit FilesInRun(const Snapshot& phone) : phone_(phone) {}

    /// Does what the record did, in its order: it reads, then it writes.
    RecordOutcome Process(const RecordReport& report)
    {
        const TableRecord& record = *report.record;
        const auto source = FindIniValue(At(record.sourceFile), record.sourceSection, record.sourceKey);
        const bool isFound = report.source && (source || !report.source->empty());
        const bool hasZeroByte = source && source->find('\0') != std::string_view::npos; // no file takes such a value
        std::string& text = At(record.file);
        const auto found = FindIniValue(text, record.section, record.key);
        const bool isSame = found && *found == report.value;
        const bool isWritten = !hasZeroByte && SetIniValue(text, record.section, record.key, report.value);
        if (!isFound)
            return RecordOutcome::NoSource;
        if (isWritten && report.value.empty())
            return RecordOutcome::WroteEmpty;
        return isSame || !isWritten ? RecordOutcome::NothingChanged : RecordOutcome::Moved;
    }

private:
    std::string& At(const std::string& path)
    {
        const std::string normal = NormalPath(path);
        return files_.try_emplace(normal, ContentOf(phone_, normal)).first->second;
    }

    const Snapshot& phone_;
    std::map<std::string, std::string> files_;
};

} // namespace

const char* OutcomeWords(RecordOutcome outcome)
{
    constexpr const char* kWords[] = {"moved", "no source", "wrote empty", "nothing changed", "never ran"};
    return kWords[static_cast<std::size_t>(outcome)];
}

std::vector<RecordOutcome> FindRecordOutcomes(const std::vector<TableRecord>& records,
                                              const std::vector<RunReports>& runs, const Snapshot& before,
                                              const std::vector<PassState>& states)
{
    std::vector<RecordOutcome> outcomes;
    const auto run = std::find_if(runs.begin(), runs.end(),
                                  [](const RunReports& one) { return one.mode == "all" || one.mode == "dev"; });
    if (run != runs.end()) {
        FilesInRun files(PhoneBeforeTable(before, states));
        for (const RecordReport& report : ReadRecordReports(run->output, records)) {
            if (!report.endsPass)
                outcomes.push_back(files.Process(report));
        }
    }
    outcomes.resize(records.size(), RecordOutcome::NeverRan);
    return outcomes;
}
