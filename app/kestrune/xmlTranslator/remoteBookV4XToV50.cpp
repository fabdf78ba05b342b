// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "remoteBookV4XToV50.h"

#include <tinyxml.h>

#include "fileHelper.h"
#include "passReports.h"
#include "phoneFacts.h"
#include "trace.h"
#include "xmlElement.h"
#include "xmlFile.h"

namespace
{

constexpr int kFewestItems = 6;

int CountItems(const TiXmlElement& root)
{
    int count = 0;
    const TiXmlElement* item = root.FirstChildElement("item");
    for (; item != nullptr && count < kFewestItems; item = item->NextSiblingElement("item"))
        ++count;
    return count;
}

/// @return false if there is no memory for an element
bool PadItems(TiXmlElement& root)
{
    for (int count = CountItems(root); count < kFewestItems; ++count) {
        TiXmlElement* item = AppendElement(root, "item");
        if (item == nullptr)
            return false;
        item->SetAttribute("name", "");
        item->SetAttribute("url", "");
    }
    return true;
}

} // namespace

int RemoteBookV4XToV50(const char* oldPath, const char* newPath)
{
    ETL_TraceHelper::chTraceStack scope("RemoteBookV4XToV50");
    if (oldPath == nullptr || newPath == nullptr)
        return 0;
    if (ETL_MiscHelper::pathFileExist(oldPath) == 0)
        return 0;

    TiXmlDocument document;
    if (LoadDataFile(document, oldPath) == 0) {
        ETL_TraceHelper::etlTrace(ETL_TraceHelper::kTraceData, kNoRemoteBooksReport);
        return 0;
    }
    TiXmlElement* root = document.FirstChildElement(kOldRemoteBooks.root);
    if (root == nullptr)
        return 0;

    root->SetValue("root_remote_phonebook");
    if (!PadItems(*root))
        return 0;
    return SaveXmlFile(document, newPath, oldPath);
}
