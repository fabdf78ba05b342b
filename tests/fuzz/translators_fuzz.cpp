// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// An old data file with arbitrary bytes. Input: a first byte that chooses the translator, then the file.

#include <string>
#include <tinyxml.h>
#include <unistd.h>

#include "contactV4XToV50.h"
#include "dialNowV4XToV50.h"
#include "dialPlanV4XToV50.h"
#include "doorPhoneV4XToV50.h"
#include "dssKeyV4XToV50.h"
#include "fuzzInput.h"
#include "remoteBookV4XToV50.h"
#include "scratchFolder.h"
#include "xmlFile.h"

namespace
{

int Translate(unsigned char choice, const char* oldPath, const char* newPath)
{
    switch (choice % 6) {
    case 0:
        return ContactV4XToV50(oldPath, newPath, FuzzFile("groups.xml").c_str());
    case 1:
        return DialPlanV4XToV50(oldPath, newPath);
    case 2:
        return DialNowV4XToV50(oldPath, newPath);
    case 3:
        return DSSKeyV4XToV50(oldPath, newPath);
    case 4:
        return DoorPhoneV4XToV50(oldPath, newPath);
    default:
        return RemoteBookV4XToV50(oldPath, newPath);
    }
}

std::string Print(const TiXmlDocument& document)
{
    TiXmlPrinter printer;
    document.Accept(&printer);
    return printer.Str();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    setenv("ETL_TRACE_LEVEL", "0", /*overwrite=*/1);
    const std::string oldPath = FuzzFile("old.xml");
    const std::string newPath = FuzzFile("new.xml");
    const std::string old = InputText(data + 1, size - 1);
    WriteBytes(oldPath, old);
    (void)unlink(newPath.c_str());

    const int result = Translate(data[0], oldPath.c_str(), newPath.c_str());
    Require(ReadBytes(oldPath) == old);
    if (result == 0)
        return 0;
    const std::string once = ReadBytes(newPath);
    Require(Translate(data[0], oldPath.c_str(), newPath.c_str()) == 1);
    Require(ReadBytes(newPath) == once);

    const bool isBuiltAfresh = data[0] % 6 != 5; // the remote phone books keep the content of the old file
    TiXmlDocument document;
    if (isBuiltAfresh && !once.empty()) {
        Require(LoadXmlFile(document, newPath.c_str()) != 0);
        Require(!Print(document).empty());
    }
    return 0;
}
