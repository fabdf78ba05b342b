// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "wellFormedness.h"

#include <algorithm>
#include <libxml/parser.h>
#include <memory>

#include "phoneImage/printable.h"

namespace
{

using DocumentPointer = std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)>;

/// The parser goes through the file from top to bottom.
bool IsFoundAt(const Findings& findings, int line)
{
    return !findings.empty() && findings.back().rule == "KT036" && findings.back().line == line;
}

void AddError(const xmlError& error, Findings& findings)
{
    // Content after the root is the subject of KT019.
    if (error.level != XML_ERR_FATAL || error.code == XML_ERR_DOCUMENT_END || IsFoundAt(findings, error.line))
        return;
    std::string message = error.message;
    message.resize(std::min(message.size(), message.find('\n')));
    findings.push_back({"KT036", std::max(error.line, 1), "other XML parsers refuse the table: " + Printable(message)});
}

} // namespace

void CheckWellFormedness(const std::string& path, Findings& findings)
{
    // Generic: later versions of the library give a pointer to const.
    const xmlStructuredErrorFunc handler = [](void* target, auto* error) {
        AddError(*error, *static_cast<Findings*>(target));
    };
    xmlSetStructuredErrorFunc(&findings, handler);
    // Goes on after an error, fetches nothing, and keeps entities as they are.
    (void)DocumentPointer(xmlReadFile(path.c_str(), /*encoding=*/nullptr, XML_PARSE_RECOVER | XML_PARSE_NONET),
                          &xmlFreeDoc);
    xmlSetStructuredErrorFunc(nullptr, nullptr);
}
