// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The conversion of 1,000 contacts, and the same documents loaded, built and saved with the bare library: without
// limits on the input, and overwriting the file in place.

#include <fstream>
#include <sstream>
#include <string>

#include <benchmark/benchmark.h>
#include <tinyxml.h>

#include "contactV4XToV50.h"
#include "generatedInput.h"
#include "scratchFolder.h"

namespace
{

constexpr char kOld[] = "contactData.xml";
constexpr char kNew[] = "contact_list.xml";
constexpr char kNewGroups[] = "contact_group_list.xml";

TiXmlElement* Append(TiXmlNode& parent, const char* name)
{
    return parent.LinkEndChild(new TiXmlElement(name))->ToElement();
}

void AddContact(TiXmlElement& root, const TiXmlElement& old, int group)
{
    TiXmlElement& contact = *Append(root, "contact");
    contact.SetAttribute("display_name", old.Attribute("sLocalRename"));
    contact.SetAttribute("office_number", old.Attribute("sOfficeNumber"));
    contact.SetAttribute("mobile_number", old.Attribute("sMobilNumber"));
    contact.SetAttribute("other_number", old.Attribute("sPrivateNumber"));
    contact.SetAttribute("line", "0");
    contact.SetAttribute("ring", "");
    contact.SetAttribute("group_id_name", group);
    contact.SetAttribute("default_photo",
                         "/data/" + std::string(old.Attribute("sImagePath")).substr(sizeof "/rundata"));
}

void AddGroup(TiXmlElement& root, int id, const char* name, int isReadOnly)
{
    TiXmlElement& group = *Append(root, "group");
    group.SetAttribute("id_name", id);
    group.SetAttribute("display_name", name);
    group.SetAttribute("ring", "");
    group.SetAttribute("read_only", isReadOnly);
}

void ConvertPlainly()
{
    TiXmlDocument old;
    Require(old.LoadFile(kOld), "load");
    TiXmlDocument contacts;
    TiXmlDocument groups;
    TiXmlElement& contactRoot = *Append(contacts, "root_contact");
    TiXmlElement& groupRoot = *Append(groups, "root_group");

    AddGroup(groupRoot, 0, "All", 1);
    int id = 2;
    const TiXmlElement* group = old.RootElement()->FirstChildElement("group");
    for (; group != nullptr; group = group->NextSiblingElement("group"), ++id) {
        const TiXmlElement* contact = group->FirstChildElement("contact");
        for (; contact != nullptr; contact = contact->NextSiblingElement("contact"))
            AddContact(contactRoot, *contact, id);
        AddGroup(groupRoot, id, group->Attribute("sGroupName"), 0);
    }
    AddGroup(groupRoot, 1, "Black List", 1);
    Require(contacts.SaveFile(kNew) && groups.SaveFile(kNewGroups), "save");
}

void ConvertAsKestrune()
{
    Require(ContactV4XToV50(kOld, kNew, kNewGroups) != 0, "convert");
}

std::string NewFiles()
{
    std::stringstream bytes;
    bytes << std::ifstream(kNew).rdbuf() << std::ifstream(kNewGroups).rdbuf();
    return bytes.str();
}

/// Only programs that write the same files can be compared.
void RequireSameFiles()
{
    const ScratchFolder folder(ScratchFolder::Place::Memory);
    WriteDurably(kOld, MakeContacts(1000));
    ConvertPlainly();
    const std::string files = NewFiles();
    ConvertAsKestrune();
    Require(NewFiles() == files, "convert both ways to the same files");
}

/// The new files must be created each time: writing the same bytes again is less work for kestrune.
void Do(benchmark::State& state, void (*convert)())
{
    const ScratchFolder folder(ScratchFolder::Place::Memory);
    WriteDurably(kOld, MakeContacts(1000));
    for (auto _ : state) {
        convert();
        state.PauseTiming();
        std::filesystem::remove(kNew);
        std::filesystem::remove(kNewGroups);
        state.ResumeTiming();
    }
}

} // namespace

int main(int argumentCount, char** arguments)
{
    RequireSameFiles();
    benchmark::RegisterBenchmark("xml/contacts/kestrune", Do, ConvertAsKestrune)->UseRealTime();
    benchmark::RegisterBenchmark("xml/contacts/floor", Do, ConvertPlainly)->UseRealTime();
    benchmark::Initialize(&argumentCount, arguments);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
