// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "dialNowV4XToV50.h"

#include <tinyxml.h>

#include "fileHelper.h"
#include "passReports.h"
#include "phoneFacts.h"
#include "trace.h"
#include "xmlElement.h"
#include "xmlFile.h"

int GetV4XDialNowData(const char* oldPath, std::list<DialRuleRecord>& rules)
{
    if (oldPath == nullptr)
        return 0;
    if (ETL_MiscHelper::pathFileExist(oldPath) == 0) {
        ETL_TraceHelper::etlTrace(ETL_TraceHelper::kTraceData, "The file [%s] is not found !!", oldPath);
        return 0;
    }

    TiXmlDocument document;
    if (LoadDataFile(document, oldPath) == 0) {
        ETL_TraceHelper::etlTrace(ETL_TraceHelper::kTraceData, kNoDialFileReport, oldPath);
        return 0;
    }
    const TiXmlElement* root = document.FirstChildElement(kOldDialNow.root);
    if (root == nullptr)
        return 0;

    const TiXmlElement* element = root->FirstChildElement("Data");
    for (; element != nullptr; element = element->NextSiblingElement("Data")) {
        DialRuleRecord rule;
        rule.prefix = TinyXml_GetStringAttr(element, "DialNowRule", "");
        rule.account = TinyXml_GetStringAttr(element, "Account", "");
        rules.push_back(std::move(rule));
    }
    return 1;
}

int SetV50DialNowData(const char* newPath, const std::list<DialRuleRecord>& rules, const char* oldPath)
{
    if (newPath == nullptr)
        return 0;
    TiXmlDocument document;
    TiXmlElement* root = AppendElement(document, "dialNow");
    if (root == nullptr)
        return 0;
    for (const DialRuleRecord& rule : rules) {
        TiXmlElement* element = AppendElement(*root, "data");
        if (element == nullptr)
            return 0;
        element->SetAttribute("rule", rule.prefix);
        element->SetAttribute("lines", rule.account);
    }
    return SaveXmlFile(document, newPath, oldPath);
}

int DialNowV4XToV50(const char* oldPath, const char* newPath)
{
    ETL_TraceHelper::chTraceStack scope("DialNowV4XToV50");
    if (oldPath == nullptr || newPath == nullptr)
        return 0;

    std::list<DialRuleRecord> rules;
    if (GetV4XDialNowData(oldPath, rules) == 0)
        return 0;
    return SetV50DialNowData(newPath, rules, oldPath);
}
