// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "dialPlanV4XToV50.h"

#include <tinyxml.h>

#include "fileHelper.h"
#include "passReports.h"
#include "phoneFacts.h"
#include "trace.h"
#include "xmlElement.h"
#include "xmlFile.h"

int GetV4XDialPlanData(const char* oldPath, std::list<DialRuleRecord>& rules)
{
    if (oldPath == nullptr)
        return 0;
    if (ETL_MiscHelper::pathFileExist(oldPath) == 0) {
        ETL_TraceHelper::etlTrace(ETL_TraceHelper::kTraceData, "The file [%s] is not found !!", oldPath);
        return 0;
    }
    rules.clear();

    TiXmlDocument document;
    if (LoadDataFile(document, oldPath) == 0) {
        ETL_TraceHelper::etlTrace(ETL_TraceHelper::kTraceData, kNoDialFileReport, oldPath);
        return 0;
    }
    const TiXmlElement* root = document.FirstChildElement(kOldDialPlan.root);
    if (root == nullptr)
        return 0;

    const TiXmlElement* element = root->FirstChildElement("Data");
    for (; element != nullptr; element = element->NextSiblingElement("Data")) {
        DialRuleRecord rule;
        rule.prefix = TinyXml_GetStringAttr(element, "Prefix", "");
        rule.replacement = TinyXml_GetStringAttr(element, "Replace", "");
        rule.account = TinyXml_GetStringAttr(element, "Account", "");
        rules.push_back(std::move(rule));
    }
    return 1;
}

int SetV50DialPlanData(const char* newPath, const std::list<DialRuleRecord>& rules, const char* oldPath)
{
    if (newPath == nullptr)
        return 0;
    TiXmlDocument document;
    TiXmlElement* root = AppendElement(document, "dialRule");
    if (root == nullptr)
        return 0;
    for (const DialRuleRecord& rule : rules) {
        TiXmlElement* element = AppendElement(*root, "data");
        if (element == nullptr)
            return 0;
        element->SetAttribute("rule", rule.prefix);
        element->SetAttribute("replace", rule.replacement);
        element->SetAttribute("lines", rule.account);
    }
    return SaveXmlFile(document, newPath, oldPath);
}

int DialPlanV4XToV50(const char* oldPath, const char* newPath)
{
    ETL_TraceHelper::chTraceStack scope("DialPlanV4XToV50");
    if (oldPath == nullptr || newPath == nullptr)
        return 0;

    std::list<DialRuleRecord> rules;
    if (GetV4XDialPlanData(oldPath, rules) == 0)
        return 0;
    return SetV50DialPlanData(newPath, rules, oldPath);
}
