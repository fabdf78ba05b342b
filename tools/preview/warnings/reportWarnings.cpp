// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "reportWarnings.h"

#include <algorithm>

namespace
{

/// A report that is the same whenever it comes.
struct FixedReport {
    const char* line;
    WarningRule rule;
    const char* place;
    const char* text;
};

// The odd spellings are the device's own.
constexpr FixedReport kFixedReports[] = {
    {"The file [/phone/resource/kestrune.xml] not exist !", WarningRule::PassStopped, "/phone/resource/kestrune.xml",
     "translation table: there is none"},
    {"app_log 60/4: No config translate record!", WarningRule::PassStopped, "/phone/resource/kestrune.xml",
     "translation table: it does not load or has no record"},
    {"app_log 60/4: Can's load user's inifile!", WarningRule::PassStopped, "/config/user/user.ini",
     "passwords: the file does not load, nothing is converted"},
    {"app_log 60/4: Can's load factory user's inifile!", WarningRule::PassStopped, "/phone/factory/user/user.ini",
     "passwords: the file does not load, nothing is converted"},
    {"etlTrace 3: Fail to get encrypt config !!", WarningRule::PassStopped, "/phone/resource/encryptconfig.xml",
     "passwords: the list does not load, nothing is converted"},
    {"etlTrace 2: Contact list is empty !!", WarningRule::PassStopped, "/config/data/contactData.xml",
     "contacts: no contact has a name, no list is written"},
    {"etlTrace 2: Fail to load remote phonebook !!", WarningRule::FileNotLoaded, "/config/data/remotebook.xml",
     "remote phone books: not translated"},
};

/// A report that ends in the path of a file in brackets.
struct PathReport {
    const char* beginning;
    const char* end;
    const char* text;
};

constexpr PathReport kPathReports[] = {
    {"Can's load user's inifile [", "]!", "translation table: a source does not load, its values are empty"},
    {"etlTrace 3: Fail to load file [", "] !!", "passwords: its entries are not converted"},
    {"etlTrace 2: The file [", "] can't be loaded !", "not translated"},
    {"etlTrace 2: Can't load the DoorPhone file [", "]!", "door phones: not translated"},
    {"etlTrace 2: Can't load the dsskey file [", "]!", "DSS keys: not translated"},
};

void AddLine(const std::string& line, WarningList& list)
{
    for (const FixedReport& report : kFixedReports) {
        if (line == report.line)
            list.Add(report.rule, report.place, report.text);
    }
    for (const PathReport& report : kPathReports) {
        const std::string beginning = report.beginning;
        const std::string end = report.end;
        if (line.starts_with(beginning) && line.ends_with(end) && line.size() > beginning.size() + end.size())
            list.Add(WarningRule::FileNotLoaded,
                     line.substr(beginning.size(), line.size() - beginning.size() - end.size()), report.text);
    }
    if (line.starts_with("etlTrace 2: Fail to load file [") && line.ends_with("]. Error Desc []"))
        list.Add(WarningRule::FileNotLoaded, "/config/data/contactData.xml", "contacts: not translated");
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
        if (isLocked && report.isFlagged && CannotBeEnciphered(source) && facts.secrets.Values().LayersOf(source) == 0)
            list.Add(WarningRule::TooLongToEncipher, PlaceOf(*report.record),
                     report.value.empty() ? "translation table: the value is lost"
                                          : "translation table: it stays plain");
    }
}

} // namespace

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
