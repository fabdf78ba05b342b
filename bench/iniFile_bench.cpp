// Load a file and get one key, or set it and save to memory. The key is the last of the file: everything before it has to be
// passed by. The set makes the value longer.

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

void Set(benchmark::State& state, const InputVariant& variant)
{
    const ScratchFolder folder(ScratchFolder::Place::Memory);
    const IniInput input = MakeIni(variant.size, variant.lineEnd);
    WriteDurably(kFile, input.text);
    const KeyName& last = input.keys.back();
    for (auto _ : state)
        benchmark::DoNotOptimize(
            iniLibrary::SetInMemory(kFile, last.section.c_str(), last.key.c_str(), "a rather long name for one desk"));
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
