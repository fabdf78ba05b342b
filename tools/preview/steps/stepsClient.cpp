// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "stepsClient.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "phoneImage/sandbox.h"
#include "phoneImage/toolError.h"

using nlohmann::json;

namespace
{

constexpr char kServer[] = "/kestrune-preview-steps";
constexpr char kProgram[] = "/kestrune";
constexpr char kEmulator[] = "/kestrune-emulator";
constexpr char kSysroot[] = "/kestrune-sysroot";

SandboxPrograms PlaceInSandbox(const PreviewPrograms& programs)
{
    SandboxPrograms placed = {{kProgram, programs.program}, {kServer, programs.steps}};
    if (!programs.emulator.empty())
        placed.emplace_back(kEmulator, programs.emulator);
    if (programs.sysroot.empty())
        return placed;
    // Only libraries: an emulator takes each file from there that it has, also one that the phone has.
    for (const char* folder : {"lib", "lib64", "usr/lib"}) {
        if (std::filesystem::is_directory(programs.sysroot / folder))
            placed.emplace_back(std::string(kSysroot) + '/' + folder, programs.sysroot / folder);
    }
    return placed;
}

std::vector<std::string> StartOf(const PreviewPrograms& programs)
{
    if (programs.emulator.empty())
        return {kProgram};
    if (programs.sysroot.empty())
        return {kEmulator, kProgram};
    return {kEmulator, "-L", kSysroot, kProgram};
}

std::string TextOf(const json& object, const char* name)
{
    return object.at(name).get<std::string>();
}

ListedEntry ReadEntry(const json& object)
{
    return {TextOf(object, "file"),    TextOf(object, "section"),           TextOf(object, "key"),
            TextOf(object, "default"), object.at("perAccount").get<bool>(), object.at("active").get<bool>()};
}

TableRecord ReadRecord(const json& object)
{
    return {TextOf(object, "sourceFile"), TextOf(object, "sourceSection"),  TextOf(object, "sourceKey"),
            TextOf(object, "file"),       TextOf(object, "section"),        TextOf(object, "key"),
            object.at("line").get<int>(), object.at("hasFlag").get<bool>(), object.at("isFlagged").get<bool>()};
}

} // namespace

StepsClient::StepsClient(const PreviewPrograms& programs, const std::filesystem::path& phone)
    : start_(StartOf(programs)),
      sandbox_(std::make_unique<TalkingChild>(SandboxCommand(phone, PlaceInSandbox(programs), kServer)))
{
}

PhoneLists StepsClient::ReadLists() const
{
    const json answer = Ask({{"command", "lists"}});
    PhoneLists lists;
    for (const json& entry : answer.at("entries"))
        lists.entries.push_back(ReadEntry(entry));
    for (const json& record : answer.at("records"))
        lists.records.push_back(ReadRecord(record));
    return lists;
}

std::vector<std::vector<std::string>> StepsClient::Decipher(const std::vector<std::string>& texts) const
{
    if (texts.empty())
        return {};
    const json answer = Ask({{"command", "decipher"}, {"texts", texts}});
    if (!answer.is_array() || answer.size() != texts.size())
        throw ToolError("kestrune-preview-steps gave no answer");
    return answer.get<std::vector<std::vector<std::string>>>();
}

bool StepsClient::RunSteps(const std::string& mode, const std::function<void(const std::string&)>& atPassEnd) const
{
    json answer = Ask({{"command", "steps"}, {"mode", mode}});
    while (answer.contains("pass")) {
        atPassEnd(TextOf(answer, "pass"));
        answer = Ask("next");
    }
    return answer.at("status").get<int>() == 0;
}

ChildResult StepsClient::RunProgram(const std::string& mode) const
{
    std::vector<std::string> arguments = start_;
    arguments.push_back(mode);
    const json answer = Ask({{"command", "run"}, {"arguments", arguments}});
    return {answer.at("status").get<int>(), TextOf(answer, "output"), TextOf(answer, "errors")};
}

json StepsClient::Ask(const json& question) const
{
    std::string message;
    json::to_cbor(question, message);
    sandbox_->Send(message);
    const std::optional<std::string> bytes = sandbox_->Receive();
    if (!bytes)
        throw ToolError("kestrune-preview-steps failed in the sandbox: " + SandboxWords(sandbox_->End()));
    json answer = json::from_cbor(*bytes, /*strict=*/true, /*allow_exceptions=*/false);
    if (answer.is_discarded())
        throw ToolError("kestrune-preview-steps gave no answer");
    if (answer.contains("error"))
        throw ToolError(TextOf(answer, "error"));
    return answer;
}
