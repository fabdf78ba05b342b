// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Load a file and get one key, or set it and save to memory. The key is the last one of the file, so everything before
// it has to be skipped. The new value is longer than the old one.

#include <fstream>
#include <sstream>
#include <string>

#include <benchmark/benchmark.h>

#include "generatedInput.h"
#include "iniLibrary.h"
#include "inputVariants.h"
#include "scratchFolder.h"

namespace
{

constexpr char kFile[] = "settings.ini";

void Get(benchmark::State& state, const InputVariant& variant)
{
    const ScratchFolder folder(ScratchFolder::Place::Memory);
    const IniInput input = MakeIni(variant.size, variant.lineEnd);
    WriteDurably(kFile, input.text);
    const KeyName& last = input.keys.back();
    for (auto _ : state)
        benchmark::DoNotOptimize(iniLibrary::Get(kFile, last.section.c_str(), last.key.c_str()));
}

constexpr char kNewValue[] = "a rather long name for one desk";

std::string SetLast(const IniInput& input)
{
    const KeyName& last = input.keys.back();
    return iniLibrary::SetInMemory(kFile, last.section.c_str(), last.key.c_str(), kNewValue);
}

std::string WithLastValue(const IniInput& input, const std::string& lineEnd)
{
    std::string text = input.text;
    const std::size_t begin = text.rfind('=') + 1;
    return text.replace(begin, text.find(lineEnd, begin) - begin, kNewValue);
}

/// Whether a set preserves all other bytes.
bool KeepsOtherBytes(const IniInput& input, const std::string& lineEnd)
{
    std::string text = SetLast(input);
    if (text.empty()) { // saved to the file
        std::stringstream bytes;
        bytes << std::ifstream(kFile).rdbuf();
        text = bytes.str();
    }
    return text == WithLastValue(input, lineEnd);
}

void Set(benchmark::State& state, const InputVariant& variant)
{
    const ScratchFolder folder(ScratchFolder::Place::Memory);
    const IniInput input = MakeIni(variant.size, variant.lineEnd);
    WriteDurably(kFile, input.text);
    for (auto _ : state)
        benchmark::DoNotOptimize(SetLast(input));
    state.SetLabel(KeepsOtherBytes(input, variant.lineEnd) ? "kept" : "lost");
}

} // namespace

int main(int argumentCount, char** arguments)
{
    for (const InputVariant& variant : kInputVariants) {
        benchmark::RegisterBenchmark(("get/" + variant.name).c_str(), Get, variant)->UseRealTime();
        if (iniLibrary::kCanWrite)
            benchmark::RegisterBenchmark(("set/" + variant.name).c_str(), Set, variant)->UseRealTime();
    }
    benchmark::Initialize(&argumentCount, arguments);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
