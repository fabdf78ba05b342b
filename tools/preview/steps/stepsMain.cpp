// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Runs in the sandbox, on a phone's files at the device's own paths. Runs the program there, and answers what only the
// program's own code can say: what each pass changes, which settings the phone's lists call secret, and what an enciphered
// value says. Each question is a message to standard input, each answer one on standard output (childProcess.h):
//
//   lists            the entry list and the table's records
//   decipher TEXTS   for each text, the array of the texts that it deciphers to in turn
//   steps MODE       runs the mode; after each pass its name, and then the next pass waits for a message; at last the status
//   run ARGUMENTS    runs the unmodified program: its status and what it wrote
//
// Messages are CBOR: the values of a phone are bytes, which JSON could not hold.

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <list>
#include <nlohmann/json.hpp>
#include <string>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <tinyxml.h>
#include <unistd.h>

#include "configMapper.h"
#include "descriptor.h"
#include "passwordCipher.h"
#include "phoneImage/childProcess.h"
#include "phoneImage/imageLimits.h"
#include "phoneImage/toolError.h"
#include "processStart.h"
#include "runSequence.h"
#include "translateConfigTable.h"
#include "xmlFile.h"

namespace
{

using nlohmann::json;

constexpr int kMostLayers = 8;
constexpr char kOwnPath[] = "/kestrune-preview-steps"; ///< in the sandbox only

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

json ReceiveQuestion()
{
    std::uint64_t size = 0;
    if (ReadInto(questions, reinterpret_cast<char*>(&size), sizeof size) != sizeof size)
        std::exit(0); // our starter has gone, or needs nothing more
    std::string bytes(size, '\0');
    if (ReadInto(questions, bytes.data(), size) != static_cast<ssize_t>(size))
        std::exit(1);
    return json::from_cbor(bytes);
}

void Answer(const json& answer)
{
    std::string bytes;
    json::to_cbor(answer, bytes);
    const std::uint64_t size = bytes.size();
    if (!WriteAll(answers, {reinterpret_cast<const char*>(&size), sizeof size}) || !WriteAll(answers, bytes))
        std::exit(1); // our starter has gone
}

void WaitAtPassEnd(const char* pass)
{
    Answer({{"pass", pass}});
    (void)ReceiveQuestion();
}

int RunSteps(const std::string& mode)
{
    const char* const arguments[] = {"kestrune", mode.c_str()};
    return RunSequence(2, arguments, &WaitAtPassEnd);
}

json RunProgram(const std::vector<std::string>& arguments)
{
    try {
        const ChildResult result = RunChild(arguments);
        return {{"status", result.exitStatus}, {"output", result.output}, {"errors", result.errors}};
    } catch (const ToolError& error) {
        return {{"error", error.what()}};
    }
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

json Decipher(const json& texts)
{
    json answer = json::array();
    for (const json& text : texts)
        answer.push_back(DecipherInTurn(text.get<std::string>()));
    return answer;
}

/// The program's own code keeps what it has read of a phone: each question gets a process of its own.
///
/// @return its exit status; not 0 if a signal killed it
template <typename Function>
int RunForked(Function function)
{
    const pid_t process = fork();
    if (process == 0)
        std::exit(function());
    int status = -1;
    (void)waitpid(process, &status, 0); // leaves -1 if there is no process
    return status;
}

/// Ends what a run has left running, as the end of a sandbox does: nothing may write to the phone any more.
void EndOthers()
{
    (void)kill(-1, SIGKILL); // all in the sandbox but us and its first process
    while (waitpid(-1, /*status=*/nullptr, 0) > 0) {
    } // those whose parents have ended are our children
}

void AnswerQuestion(const json& question)
{
    const std::string command = question.at("command");
    if (command == "run") {
        const json answer = RunProgram(question.at("arguments"));
        EndOthers();
        Answer(answer);
    } else if (command == "steps") {
        const int status = RunForked([&question] { return RunSteps(question.at("mode")); });
        EndOthers();
        Answer({{"status", status}});
    } else {
        const int status = RunForked([&question, &command] {
            Answer(command == "decipher" ? Decipher(question.at("texts"))
                                         : json({{"entries", ListEntries()}, {"records", ListRecords()}}));
            return 0;
        });
        if (status != 0)
            std::exit(1); // the answer may be cut
    }
}

/// The program must not look into this process, nor fill the memory with what it writes: a file of a phone, or an output,
/// beyond the limit is an error.
bool Prepare()
{
    rlimit limit = {};
    if (getrlimit(RLIMIT_FSIZE, &limit) != 0)
        return false;
    limit.rlim_max = std::min<rlim_t>(limit.rlim_max, kMostFileBytes + 1);
    limit.rlim_cur = std::min(limit.rlim_cur, limit.rlim_max);
    return setrlimit(RLIMIT_FSIZE, &limit) == 0 && prctl(PR_SET_DUMPABLE, 0) == 0 &&
           prctl(PR_SET_CHILD_SUBREAPER, 1) == 0;
}

} // namespace

int main()
{
    constexpr mode_t kUsualUmask = 022; // as at a phone's start, whatever that of the user is
    (void)umask(kUsualUmask);
    PrepareProcess();
    if (access(kOwnPath, F_OK) != 0) {
        std::fputs("kestrune-preview-steps: started by kestrune-preview, in its sandbox\n", stderr);
        return 1;
    }
    SetStreamsAside();
    if (!Prepare())
        return 1;
    for (;;) {
        const json question = ReceiveQuestion();
        if (question.is_object()) // otherwise for a pass of a run that has ended too early
            AnswerQuestion(question);
    }
}
