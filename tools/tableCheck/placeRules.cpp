// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "placeRules.h"

#include <algorithm>
#include <string_view>
#include <tinyxml.h>

#include "fileKinds.h"
#include "iniFile.h"
#include "phoneImage/normalPath.h"
#include "quotedText.h"
#include "tableRecord.h"

namespace
{

bool IsRelative(const std::string& path)
{
    return path.front() != '/';
}

bool LiesBelow(const std::string& path, std::string_view folder)
{
    return NormalPath(path).starts_with(folder);
}

/// An attribute and its text.
struct Given {
    const char* name;
    std::string text;

    std::string Quoted() const { return name + ("=" + QuotedText(text)); }
};

/// @return the first of the attributes that is there; the last name with an empty text when none is
Given FirstGiven(const TiXmlElement& record, const char* name, const char* fallbackName)
{
    if (const char* text = record.Attribute(name))
        return {name, text};
    const char* text = record.Attribute(fallbackName);
    return {fallbackName, text == nullptr ? "" : text};
}

/// @return true when a path has a wildcard, or a format that takes a number or a name
bool HasPattern(std::string_view path)
{
    return path.find_first_of("*?{}") != std::string_view::npos || path.find("%d") != std::string_view::npos ||
           path.find("%u") != std::string_view::npos || path.find("%s") != std::string_view::npos;
}

bool HasBlankAtEnd(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r\n";
    return !text.empty() && (kBlanks.find(text.front()) != std::string_view::npos ||
                             kBlanks.find(text.back()) != std::string_view::npos);
}

/// @return what is wrong with a path that no phone has; empty when it may have it
std::string_view WhyNoPhoneHas(std::string_view path)
{
    if (HasPattern(path))
        return "has a pattern, but the program uses the path as it is";
    return HasBlankAtEnd(path) ? "begins or ends with a blank, which is part of it" : "";
}

void CheckDestinationFile(const TableRecord& record, Findings& findings)
{
    const TiXmlElement& element = *record.element;
    const Given file = FirstGiven(element, "dstFile", "srcFile");
    const int line = AttributeLine(element, file.name);
    if (element.Attribute(file.name) == nullptr)
        findings.push_back({"KT006", line, "the record has no attribute dstFile or srcFile: the pass ends here"});
    else if (NamesNoFile(file.text))
        findings.push_back({"KT006", line, file.Quoted() + " names no file to write to: the pass ends here"});
    else if (const std::string_view why = WhyNoPhoneHas(file.text); !why.empty())
        findings.push_back({"KT034", line, file.Quoted() + " " + std::string(why) + ": the pass ends here"});
    else if (IsRelative(file.text))
        findings.push_back(
            {"KT015", line, file.Quoted() + " is relative: if nothing is found there, the pass ends here"});
    else if (HasForeignEnding(file.text))
        findings.push_back({"KT031", line, file.Quoted() + " is no configuration file: the key is appended to it"});
    else if (!LiesBelow(file.text, "/config/"))
        findings.push_back(
            {"KT016", line, file.Quoted() + " leads out of /config: what is written there is no setting"});
}

/// A source file that is the destination as well is judged as that.
void CheckSourceFile(const TableRecord& record, Findings& findings)
{
    const TiXmlElement& element = *record.element;
    const char* file = element.Attribute("srcFile");
    if (file == nullptr || element.Attribute("dstFile") == nullptr)
        return;
    const Given given = {"srcFile", file};
    const int line = AttributeLine(element, given.name);
    if (NamesNoFile(given.text))
        findings.push_back(
            {"KT005", line, given.Quoted() + " names no file: " + Describe(record.destination) + " is set to empty"});
    else if (const std::string_view why = WhyNoPhoneHas(given.text); !why.empty())
        findings.push_back(
            {"KT034", line,
             given.Quoted() + " " + std::string(why) + ": " + Describe(record.destination) + " is set to empty"});
    else if (HasForeignEnding(given.text))
        findings.push_back(
            {"KT033", line, given.Quoted() + " is no configuration file: it is unlikely to have the key"});
    else if (IsRelative(given.text))
        findings.push_back(
            {"KT015", line,
             given.Quoted() + " is relative: if nothing is found there, the destination is set to empty"});
    else if (!LiesBelow(given.text, "/config/") && !LiesBelow(given.text, "/phone/") && !LiesBelow(given.text, "/tmp/"))
        findings.push_back({"KT016", line, given.Quoted() + " leads out of /config, /phone and /tmp"});
}

void CheckSourceAttributes(const TableRecord& record, Findings& findings)
{
    std::string missing;
    for (const char* name : {"srcFile", "srcSec", "srcKey"}) {
        if (record.element->Attribute(name) == nullptr)
            missing.append(missing.empty() ? "" : ", ").append(name);
    }
    if (missing.empty())
        return;
    const std::string effect =
        NamesNoFile(record.destinationFile) ? "" : ", and " + Describe(record.destination) + " is set to empty";
    findings.push_back(
        {"KT005", record.Line(), "the record has no attribute " + missing + ": nothing is read" + effect});
}

/// A section's name keeps its blanks, unlike a key's, so that it is another section than the one that was meant.
void CheckSectionBlanks(const TiXmlElement& record, Findings& findings)
{
    for (const char* name : {"srcSec", "dstSec"}) {
        const char* section = record.Attribute(name);
        if (section != nullptr && HasBlankAtEnd(section))
            findings.push_back({"KT035", AttributeLine(record, name),
                                name + ("=" + QuotedText(section)) +
                                    " begins or ends with a blank, which is part of the section's name"});
    }
}

/// Asks the store itself.
bool IsSectionRefused(const std::string& section)
{
    iniFile probe;
    return probe.SetTextValue(section, "key", "") == 0;
}

bool IsKeyRefused(const std::string& key)
{
    iniFile probe;
    return probe.SetTextValue("section", key, "") == 0;
}

using IsRefused = bool (*)(const std::string&);

/// @param what  "section" or "key"
void CheckName(const TableRecord& record, const char* sourceName, const char* destinationName, const char* what,
               IsRefused isRefused, Findings& findings)
{
    const TiXmlElement& element = *record.element;
    const Given destination = FirstGiven(element, destinationName, sourceName);
    if (isRefused(destination.text))
        findings.push_back({"KT017", AttributeLine(element, destination.name),
                            std::string("the store refuses the ") + what + " name " + QuotedText(destination.text) +
                                ": nothing is written"});
    // A source's name that is the destination's as well has just been judged.
    const char* source = element.Attribute(sourceName);
    if (source != nullptr && source != destination.text && isRefused(source))
        findings.push_back({"KT017", AttributeLine(element, sourceName),
                            std::string("no file has a ") + what + " of the name " + QuotedText(source) + ": " +
                                Describe(record.destination) + " is set to empty"});
}

} // namespace

void CheckPlaces(const TableRecord& record, Findings& findings)
{
    CheckDestinationFile(record, findings);
    CheckSourceFile(record, findings);
    CheckSourceAttributes(record, findings);
    CheckSectionBlanks(*record.element, findings);
    CheckName(record, "srcSec", "dstSec", "section", IsSectionRefused, findings);
    CheckName(record, "srcKey", "dstKey", "key", IsKeyRefused, findings);
    if (record.IsInPlace() && !record.isEnciphered)
        findings.push_back({"KT020", record.Line(),
                            "the record writes " + Describe(record.destination) + " over itself, and not enciphered"});
}
