// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "stepsClient.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "phoneImage/childProcess.h"
#include "phoneImage/sandbox.h"
#include "phoneImage/toolError.h"

using nlohmann::json;

namespace
{

json ParseAnswer(const std::string& bytes)
{
    json answer = json::from_cbor(bytes, /*strict=*/true, /*allow_exceptions=*/false);
    if (answer.is_discarded())
        throw ToolError("kestrune-preview-steps gave no answer");
    return answer;
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

StepsClient::StepsClient(std::filesystem::path program, std::filesystem::path phone)
    : program_(std::move(program)), phone_(std::move(phone))
{
}

PhoneLists StepsClient::ReadLists() const
{
    const json answer = ParseAnswer(Ask("lists", std::string()));
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
    std::string question;
    json::to_cbor(json(texts), question);
    const json answer = ParseAnswer(Ask("decipher", question));
    if (!answer.is_array() || answer.size() != texts.size())
        throw ToolError("kestrune-preview-steps gave no answer");
    return answer.get<std::vector<std::vector<std::string>>>();
}

bool StepsClient::RunSteps(const std::string& mode, const std::function<void(const std::string&)>& atPassEnd) const
{
    return RunInSteps(SandboxCommand(phone_, program_, {"steps", mode}), atPassEnd) == 0;
}

std::string StepsClient::Ask(const std::string& command, const std::string& input) const
{
    const ChildResult result = RunChild(SandboxCommand(phone_, program_, {command}), input);
    if (result.exitStatus != 0)
        throw ToolError("kestrune-preview-steps failed in the sandbox: " + SandboxWords(result));
    return result.output;
}
