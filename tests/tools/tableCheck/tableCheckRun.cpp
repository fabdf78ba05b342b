// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "tableCheckRun.h"

#include <filesystem>
#include <unistd.h>

#include "checkTable.h"
#include "scratchFolder.h"

namespace
{

ProcessResult RunWith(std::vector<std::string> command, const std::vector<std::string>& arguments)
{
    command.insert(command.end(), {"env", "--chdir=" + SourcePath("tests/tools/tableCheck"), KESTRUNE_TABLE_CHECK});
    command.insert(command.end(), arguments.begin(), arguments.end());
    return RunProcess(command, {"PATH=/usr/bin:/bin"});
}

} // namespace

ProcessResult RunTableCheck(const std::vector<std::string>& arguments)
{
    return RunWith({}, arguments);
}

ProcessResult RunTableCheckWithoutPrivileges(const std::vector<std::string>& arguments)
{
    if (geteuid() != 0)
        return RunTableCheck(arguments);
    return RunWith({"setpriv", "--bounding-set=-dac_override,-dac_read_search"}, arguments);
}

std::string TableCheckFolder()
{
    const std::string path = KESTRUNE_TABLE_CHECK;
    return path.substr(0, path.rfind('/'));
}

std::string Summary(const Findings& findings)
{
    std::string summary;
    for (const Finding& finding : findings) {
        summary.append(summary.empty() ? "" : ", ").append(finding.rule);
        summary.append(" at ").append(std::to_string(finding.line));
    }
    return summary.empty() ? "nothing" : summary;
}

std::string SourcePath(const std::string& path)
{
    return std::string(KESTRUNE_SOURCES) + "/" + path;
}

std::string TestPhone()
{
    return SourcePath("tests/tools/tableCheck/phone");
}

void PutKeylessPhone(const std::string& folder)
{
    std::filesystem::copy(TestPhone(), folder,
                          std::filesystem::copy_options::recursive | std::filesystem::copy_options::copy_symlinks);
    std::filesystem::remove(folder + "/phone/factory/certs/pwcipher.key");
}

std::string TablePath(const Rule& rule, const std::string& kind)
{
    return SourcePath("tests/tools/tableCheck/rules/" + std::string(rule.number) + "." + kind + ".xml");
}

Findings Check(const std::string& table, const std::string& image)
{
    return CheckTable({table, image, ""});
}

std::string SummaryOf(const std::string& text, const std::string& image)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("table.xml"), text);
    return Summary(Check(folder.Path("table.xml"), image));
}

std::string Record(const std::string& attributes)
{
    return "<t>\n<record srcFile='/config/user/user.ini' " + attributes + "/>\n</t>";
}
