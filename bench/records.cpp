// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "records.h"

#include <benchmark/benchmark.h>

#include "iniLibrary.h"

bool CanDoRecords()
{
    return iniLibrary::kCanWrite;
}

void DoRecords(const std::string& name, Pass /*pass*/, const std::vector<Record>& records)
{
    const bool isRun = name == "records/first" || name == "records/second";
    if (isRun)
        iniLibrary::BeginRun();
    for (const Record& record : records) {
        const char* section = record.key.section.c_str();
        const char* key = record.key.key.c_str();
        benchmark::DoNotOptimize(iniLibrary::Get(record.source.c_str(), section, key));
        iniLibrary::SetInFile(record.destination.c_str(), section, key, record.value.c_str());
    }
    if (isRun)
        iniLibrary::CommitRun();
}
