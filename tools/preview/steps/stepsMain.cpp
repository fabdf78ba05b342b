// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Runs in the sandbox, on a phone's files at the device's own paths, and answers what only the program's own code can
// say: what each pass changes, which settings the phone's lists call secret, and what an enciphered value says.
//
//   steps MODE   runs the mode; after each pass writes its name as a line and waits for a line
//   lists        writes the entry list and the table's records
//   decipher     reads an array of texts and writes, for each, the array of the texts that it deciphers to in turn
//
// Lists and texts are CBOR: the values of a phone are bytes, which JSON could not hold.

#include <cstdio>
#include <fcntl.h>
#include <iostream>
#include <iterator>
#include <list>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <tinyxml.h>
#include <unistd.h>

#include "configMapper.h"
#include "passwordCipher.h"
#include "processStart.h"
#include "runSequence.h"
#include "translateConfigTable.h"
#include "xmlFile.h"

namespace
{

using nlohmann::json;

constexpr int kMostLayers = 8;

int questions = -1; ///< the descriptors to our starter; static, since the function that a pass end calls has no state
int answers = -1;

/// The passes get outputs that lead nowhere: their reports are those of the unmodified program's own run.
void SetStreamsAside()
{
    questions = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    answers = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        (void)dup2(nowhere, stream);
}

void WaitAtPassEnd(const char* pass)
{
    const std::string line = std::string(pass) + "\n";
    char ignored = 0;
    if (write(answers, line.data(), line.size()) != static_cast<ssize_t>(line.size()) ||
        read(questions, &ignored, 1) != 1)
        _exit(1); // our starter has gone
}

int RunSteps(const char* mode)
{
    SetStreamsAside();
    const char* const arguments[] = {"kestrune", mode};
    return RunSequence(2, arguments, &WaitAtPassEnd);
}

void Answer(const json& answer)
{
    const std::vector<std::uint8_t> bytes = json::to_cbor(answer);
    (void)std::fwrite(bytes.data(), 1, bytes.size(), stdout); // our starter sees an answer that is cut
}

json ListEntries()
{
    json list = json::array();
    std::list<CIniConfigInfo*> entries;
    CConfigMapper mapper;
    (void)mapper.GetAllEncryptConfig(entries); // no list: no entries
    for (const CIniConfigInfo* entry : entries) {
        list.push_back({{"file", entry->filePath},
                        {"section", entry->section},
                        {"key", entry->key},
                        {"default", entry->defaultText},
                        {"perAccount", entry->perAccount},
                        {"active", entry->active}});
    }
    return list;
}

json DescribeRecord(const TiXmlElement& record)
{
    std::string file;
    std::string section;
    std::string key;
    bool isEnciphered = false;
    GetDstInfo(record, file, section, key, isEnciphered);
    const bool hasFlag = record.Attribute("srcEncrypt") != nullptr || record.Attribute("dstEncrypt") != nullptr;
    return {{"sourceFile", TinyXml_GetStringAttr(&record, "srcFile", "")},
            {"sourceSection", TinyXml_GetStringAttr(&record, "srcSec", "")},
            {"sourceKey", TinyXml_GetStringAttr(&record, "srcKey", "")},
            {"file", file},
            {"section", section},
            {"key", key},
            {"line", record.Row()},
            {"hasFlag", hasFlag},
            {"isFlagged", isEnciphered}};
}

json ListRecords()
{
    json list = json::array();
    TiXmlDocument table;
    if (LoadXmlFile(table, "/phone/resource/kestrune.xml") == 0 || table.RootElement() == nullptr)
        return list;
    const TiXmlElement* record = table.RootElement()->FirstChildElement();
    for (; record != nullptr; record = record->NextSiblingElement())
        list.push_back(DescribeRecord(*record));
    return list;
}

json DecipherInTurn(std::string text)
{
    json layers = json::array();
    for (int layer = 0; layer < kMostLayers; ++layer) {
        char output[kPasswordBufferSize] = {};
        if (text.empty() || pw_data_decrypt(text.c_str(), output) != 0)
            break;
        text = output;
        layers.push_back(text);
    }
    return layers;
}

int Decipher()
{
    const std::vector<char> bytes(std::istreambuf_iterator<char>(std::cin), {});
    json answer = json::array();
    for (const json& text : json::from_cbor(bytes))
        answer.push_back(DecipherInTurn(text.get<std::string>()));
    Answer(answer);
    return 0;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    PrepareProcess();
    const std::string_view command = argumentCount > 1 ? arguments[1] : "";
    if (command == "steps" && argumentCount > 2)
        return RunSteps(arguments[2]);
    if (command == "lists") {
        Answer({{"entries", ListEntries()}, {"records", ListRecords()}});
        return 0;
    }
    if (command == "decipher")
        return Decipher();
    std::fputs("kestrune-preview-steps: started by kestrune-preview, in its sandbox\n", stderr);
    return 1;
}
