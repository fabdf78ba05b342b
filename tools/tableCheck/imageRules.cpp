// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "imageRules.h"

#include <algorithm>
#include <tinyxml.h>

#include "fileKinds.h"
#include "iniFile.h"
#include "integerText.h"
#include "passwordCipher.h"
#include "phoneFacts.h"
#include "phoneImage/phoneFolder.h"
#include "quotedText.h"
#include "requireReadable.h"
#include "tableRecord.h"

namespace
{

/// @return false when the store refuses the names, whatever the value
bool IsStorable(const Place& place)
{
    iniFile probe;
    return probe.SetTextValue(place.section, place.key, "") != 0;
}

} // namespace

ImageRules::ImageRules(const PhoneFolder& phone, const std::string& otherKey)
    : phone_(phone), keyFile_(phone.Find(kCipherKeyFile).value_or(otherKey)), cipher_(keyFile_.c_str())
{
    if (!keyFile_.empty())
        RequireReadable("the image's cipher key", keyFile_);
}

void ImageRules::Check(const TableRecord& record, Findings& findings)
{
    if (NamesNoFile(record.destinationFile))
        return; // the pass ends here on every phone
    if (record.isEnciphered && record.source)
        CheckKey(record.Line(), findings);
    ImageFile* file = Find(record.destinationFile);
    if (file == nullptr) {
        findings.push_back(
            {"KT022", AttributeLine(*record.element, "dstFile"),
             "the image has no file " + QuotedText(record.destinationFile) + " that loads: the pass ends here"});
        return;
    }
    if (file->IsForeign() && !HasForeignEnding(record.destinationFile))
        findings.push_back(
            {"KT031", AttributeLine(*record.element, "dstFile"),
             QuotedText(record.destinationFile) + " is no configuration file in the image: the key is appended to it"});
    Source source = ReadSource(record, findings);
    if (IsEnciphered(source.value))
        std::erase_if(findings, [](const Finding& finding) { return finding.rule == "KT040"; }); // it stays so
    if (!record.isEnciphered)
        CheckStaysEnciphered(record, source.value, findings);
    else if (IsLostToCipher(record, source.value, findings))
        source.written.clear();
    Write(record, source, *file, findings);
}

void ImageRules::CheckPasswordPass(int line, Findings& findings)
{
    const ImageFile* factory = Find(kFactoryUserIni);
    const std::string* lock = factory == nullptr ? nullptr : factory->Find(kLockSection, kLockKey);
    if (lock != nullptr && ParseInt32(lock->c_str()) != 0)
        CheckKey(line, findings);
}

/// One finding for the whole image, so that one comment suppresses it.
void ImageRules::CheckKey(int line, Findings& findings)
{
    if (!keyFile_.empty() || isKeyReported_)
        return;
    findings.push_back({"KT039", line, "the image has no cipher key: the development key, which is public, enciphers"});
    isKeyReported_ = true;
}

ImageRules::Source ImageRules::ReadSource(const TableRecord& record, Findings& findings)
{
    const char* file = record.element->Attribute("srcFile");
    if (!record.source || NamesNoFile(file))
        return {}; // no source on any phone
    const ImageFile* image = Find(file);
    if (image == nullptr)
        return {"", "", "KT023", AttributeLine(*record.element, "srcFile"),
                "the image has no file " + QuotedText(file) + " that loads"};
    if (image->IsForeign() && !HasForeignEnding(file) && record.element->Attribute("dstFile") != nullptr)
        findings.push_back(
            {"KT033", AttributeLine(*record.element, "srcFile"),
             QuotedText(file) + " is no configuration file in the image: it is unlikely to have the key"});
    const Place& from = *record.source;
    if (const std::string* value = image->Find(from.section, from.key))
        return {*value, *value, "", record.Line(), Describe(from) + " is empty"};
    return {"", "", "KT024", record.Line(), "the image has no key " + Describe(from)};
}

bool ImageRules::IsEnciphered(const std::string& value) const
{
    char output[kPasswordBufferSize] = {};
    return !value.empty() && cipher_.Decrypt(value.c_str(), output) == 0;
}

/// The value itself can show that it is a secret where neither list nor table does.
void ImageRules::CheckStaysEnciphered(const TableRecord& record, const std::string& value, Findings& findings) const
{
    const bool isFound = std::any_of(findings.begin(), findings.end(), [](const Finding& finding) {
        return finding.rule == "KT013" || finding.rule == "KT030";
    });
    if (!isFound && IsEnciphered(value))
        findings.push_back({"KT030", record.Line(),
                            "the value is enciphered on this phone, and " + Describe(record.destination) +
                                " gets it plain, also on a locked phone"});
}

/// The value in memory keeps the form that it has on the phone: that decides whether it can be enciphered.
bool ImageRules::IsLostToCipher(const TableRecord& record, const std::string& value, Findings& findings) const
{
    if (value.find('\0') != std::string::npos)
        return false; // the store refuses it: nothing is written
    char output[kPasswordBufferSize] = {};
    if (cipher_.Decrypt(value.c_str(), output) == 0 || cipher_.Encrypt(value.c_str(), output) == 0)
        return false;
    const std::string size = std::to_string(value.size()) + " bytes";
    const bool isLost = output[0] == '\0';
    if (isLost)
        findings.push_back({"KT026", record.Line(),
                            "the value has " + size + ", too many to encipher: on a locked phone " +
                                Describe(record.destination) + " is set to empty",
                            size});
    else
        findings.push_back({"KT027", record.Line(),
                            "the value of " + size + " cannot be enciphered: on a locked phone " +
                                Describe(record.destination) + " is written plain",
                            size});
    return isLost;
}

void ImageRules::Write(const TableRecord& record, const Source& source, ImageFile& file, Findings& findings)
{
    const Place& to = record.destination;
    const std::string* before = file.Find(to.section, to.key);
    const bool isNew = before == nullptr;
    const bool wasEmpty = isNew || before->empty();
    if (!file.Set(to.section, to.key, source.written)) {
        if (IsStorable(to))
            findings.push_back({"KT029", record.Line(),
                                "the store refuses the value, which has a line break or a zero byte in it: " +
                                    Describe(to) + " stays as it is"});
        return;
    }
    if (!wasEmpty && source.value.empty())
        findings.push_back({"KT025", record.Line(),
                            source.whyEmpty + ": the value of " + Describe(to) + " is set to empty, and lost"});
    else if (!source.rule.empty())
        findings.push_back({source.rule, source.line, source.whyEmpty + ": " + Describe(to) + " is set to empty"});
    if (isNew && !record.IsInPlace())
        findings.push_back({"KT028", record.Line(), "the image has no key " + Describe(to) + ": it is added"});
}

ImageFile* ImageRules::Find(const std::string& devicePath)
{
    const auto [known, isNew] = files_.try_emplace(devicePath);
    if (isNew) {
        if (const auto path = phone_.Find(devicePath))
            known->second = Load(*path);
    }
    return known->second;
}

ImageFile* ImageRules::Load(const std::string& path)
{
    ImageFile& file = loaded_.try_emplace(path, path).first->second;
    return file.Loads() ? &file : nullptr;
}
