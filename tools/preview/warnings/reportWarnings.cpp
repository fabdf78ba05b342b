// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "reportWarnings.h"

#include <algorithm>

#include "configMapper.h"
#include "keyedCipher.h"
#include "phoneFacts.h"

namespace
{

/// A report and what it means. One with "%s" names the file; another one is about the file of the row.
struct MeaningOfReport {
    std::string_view prefix;
    std::string_view format;
    WarningRule rule;
    std::string_view place;
    std::string_view text;
};

constexpr std::string_view kLog = "app_log 60/4: ";
constexpr std::string_view kTrace2 = "etlTrace 2: ";
constexpr std::string_view kTrace3 = "etlTrace 3: ";

constexpr MeaningOfReport kMeanings[] = {
    {"", kNoTableReport, WarningRule::PassStopped, kTableFile, "translation table: there is none"},
    {kLog, kNoRecordReport, WarningRule::PassStopped, kTableFile,
     "translation table: it does not load or has no record"},
    {"", kNoSourceReport, WarningRule::FileNotLoaded, "",
     "translation table: a source does not load, its values are empty"},
    {kLog, kNoUserIniReport, WarningRule::PassStopped, kUserIni,
     "passwords: the file does not load, nothing is converted"},
    {kLog, kNoFactoryIniReport, WarningRule::PassStopped, kFactoryUserIni,
     "passwords: the file does not load, nothing is converted"},
    {kTrace3, kNoEntryListReport, WarningRule::PassStopped, kEntryListFile,
     "passwords: the list does not load, nothing is converted"},
    {kTrace3, kNoEntryFileReport, WarningRule::FileNotLoaded, "", "passwords: its entries are not converted"},
    {kTrace2, kEmptyContactListReport, WarningRule::PassStopped, kOldContacts.path,
     "contacts: no contact has a name, no list is written"},
    {kTrace2, kNoRemoteBooksReport, WarningRule::FileNotLoaded, kOldRemoteBooks.path,
     "remote phone books: not translated"},
    {kTrace2, kNoDialFileReport, WarningRule::FileNotLoaded, "", "not translated"},
    {kTrace2, kNoDoorPhonesReport, WarningRule::FileNotLoaded, "", "door phones: not translated"},
    {kTrace2, kNoDSSKeysReport, WarningRule::FileNotLoaded, "", "DSS keys: not translated"},
};

void AddLine(const std::string& line, WarningList& list)
{
    for (const MeaningOfReport& meaning : kMeanings) {
        const std::optional<std::string> file = MatchReport(line, meaning.prefix, meaning.format);
        if (file)
            list.Add(meaning.rule, meaning.place.empty() ? *file : std::string(meaning.place),
                     std::string(meaning.text));
    }
    // The description of the fault is where the path should be, and that of the description is empty.
    if (line.starts_with(std::string(kTrace2) + std::string(LiteralOf(kNoContactsReport, 0))) &&
        line.ends_with(std::string(LiteralOf(kNoContactsReport, 1)) + "]"))
        list.Add(WarningRule::FileNotLoaded, kOldContacts.path, "contacts: not translated");
}

std::string PlaceOf(const TableRecord& record)
{
    return record.file + " [" + record.section + "] " + record.key;
}

void AddRecordWarnings(const RunFacts& facts, const std::string& output, WarningList& list)
{
    const std::vector<std::string> lines = SplitLines(output);
    const bool isLocked = std::find(lines.begin(), lines.end(), "bEncrypt=1") != lines.end();
    for (const RecordReport& report : ReadRecordReports(output, facts.lists.records)) {
        if (report.endsPass)
            list.Add(WarningRule::PassStopped, report.record->file,
                     "translation table: stopped at record " + std::to_string(report.number) + " of " +
                         std::to_string(facts.lists.records.size()) + ", this destination does not load");
        const std::string source = report.source.value_or("");
        if (!isLocked || !report.isFlagged || source.empty() || facts.secrets.Values().LayersOf(source) != 0)
            continue;
        if (CannotBeEnciphered(source))
            list.Add(WarningRule::TooLongToEncipher, PlaceOf(*report.record),
                     report.value.empty() ? "translation table: the value is lost"
                                          : "translation table: it stays plain");
        else
            AddKeyWarning(facts, list);
    }
}

} // namespace

void AddKeyWarning(const RunFacts& facts, WarningList& list)
{
    if (facts.before.count(kCipherKeyFile) == 0)
        list.Add(WarningRule::NoCipherKey, kCipherKeyFile,
                 "passwords are enciphered with a key that is public, or stay plain");
}

void AddReportWarnings(const RunFacts& facts, WarningList& list)
{
    for (const RunReports& reports : facts.reports) {
        for (const std::string& line : SplitLines(reports.output))
            AddLine(line, list);
        for (const std::string& line : SplitLines(reports.errors))
            AddLine(line, list);
        AddRecordWarnings(facts, reports.output, list);
    }
}
