// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The work of the table pass: a record reads its source, loads its destination, sets a key, and saves durably. One
// record, and 500 of them over 20 files of 8 KiB, in memory and on a disk: as one run, for the first time and again
// without changes, and with each record saved at once.

#include "records.h"

#include <string>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include "inputVariants.h"
#include "scratchFolder.h"

namespace
{

using Place = ScratchFolder::Place;

struct Table {
    int files;
    std::size_t fileSize;
    std::string lineEnd;
    int records;
};

const Table kLongTable = {20, 8192, "\n", 500};

std::string FileName(int number)
{
    return "settings" + std::to_string(number) + ".ini";
}

/// Records whose destinations are all files in turn, and keys all over each file.
std::vector<Record> MakeRecords(const Table& table, const IniInput& input)
{
    const int perFile = table.records / table.files;
    const std::size_t step = input.keys.size() / static_cast<std::size_t>(perFile);
    std::vector<Record> records;
    for (int i = 0; i < perFile * table.files; ++i) {
        const std::size_t key = (static_cast<std::size_t>(i / table.files) + 1) * step - 1;
        records.push_back({FileName((i + 1) % table.files), FileName(i % table.files), input.keys[key],
                           "reception " + std::to_string(10000 + i)});
    }
    return records;
}

/// Marks the beginning and the end of the work in a recording.
void Mark(const char* what)
{
    (void)access(what, F_OK); // there is no such file
}

void Do(benchmark::State& state, const std::string& name, const Table& table, Place place, Pass pass)
{
    const ScratchFolder folder(place);
    const IniInput input = MakeIni(table.fileSize, table.lineEnd);
    const std::vector<Record> records = MakeRecords(table, input);
    for (auto _ : state) {
        state.PauseTiming();
        for (int i = 0; i < table.files; ++i)
            WriteDurably(FileName(i), input.text);
        if (pass == Pass::Second)
            DoRecords(name, Pass::First, records);
        state.ResumeTiming();

        Mark("/records-begin");
        DoRecords(name, pass, records);
        Mark("/records-end");
    }
}

void Register(const std::string& name, const Table& table, Place place, Pass pass)
{
    const std::string placeName = place == Place::Memory ? "/tmpfs" : "/disk";
    benchmark::RegisterBenchmark((name + placeName).c_str(), Do, name, table, place, pass)->UseRealTime();
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (!CanDoRecords())
        return 0;
    for (const Place place : {Place::Memory, Place::Disk}) {
        Register("records/first", kLongTable, place, Pass::First);
        Register("records/second", kLongTable, place, Pass::Second);
        Register("records/apart", kLongTable, place, Pass::First);
        for (const InputVariant& variant : kInputVariants)
            Register("record/" + variant.name, {2, variant.size, variant.lineEnd, 2}, place, Pass::First);
    }
    benchmark::Initialize(&argumentCount, arguments);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
