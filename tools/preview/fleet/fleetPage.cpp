// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include <algorithm>
#include <cstring>
#include <functional>
#include <iomanip>
#include <sstream>

#include "fleetOutput.h"
#include "output/htmlText.h"

namespace
{

constexpr std::size_t kMostRows = 500;
constexpr std::size_t kMostPairs = 3;     ///< of values at a place, the most frequent
constexpr std::size_t kMostPlaces = 5;    ///< of a rule
constexpr std::size_t kLongestName = 200; ///< of a page; a file system allows 255 bytes, and a temporary file is longer

std::string Number(std::size_t number)
{
    return "<td class=\"number\">" + std::to_string(number) + "</td>";
}

/// A long place breaks after a slash or a section, never in a name.
std::string Place(const std::string& text)
{
    std::string html;
    for (const char character : text)
        html += EscapeHtml(std::string_view(&character, 1)) + (character == '/' ? "<wbr>" : "");
    return "<td class=\"name\">" + html + "</td>";
}

std::string Heading(std::initializer_list<const char*> columns)
{
    std::string html;
    for (const char* column : columns)
        html += std::string("<th>") + column + "</th>";
    return "<tr>" + html + "</tr>\n";
}

/// A section with a table; empty when the list is.
template <typename List, typename ToRow>
std::string Table(const char* title, const std::string& heading, const List& list, ToRow toRow)
{
    if (list.empty())
        return std::string();
    std::string html = std::string("<h2>") + title + "</h2>\n<div class=\"wide\"><table class=\"fleet\">" + heading;
    for (std::size_t i = 0; i < std::min(list.size(), kMostRows); ++i)
        html += "<tr>" + toRow(list[i]) + "</tr>\n";
    html += "</table></div>\n";
    if (list.size() > kMostRows)
        html += "<p>And " + std::to_string(list.size() - kMostRows) + " more, which the JSON has.</p>\n";
    return html;
}

std::string RuleCells(const RuleCount& rule)
{
    const std::string severity(SeverityName(rule.severity));
    std::string places;
    for (std::size_t i = 0; i < std::min(rule.places.size(), kMostPlaces); ++i)
        places += "<br>" + Element("span", "dim",
                                   std::to_string(rule.places[i].phones) + ": " + rule.places[i].place + " (" +
                                       rule.places[i].example + ")");
    if (rule.places.size() > kMostPlaces)
        places += "<br>" +
                  Element("span", "dim", "and at " + std::to_string(rule.places.size() - kMostPlaces) + " more places");
    return "<td>" + Element("span", severity.c_str(), severity + " " + rule.rule) + "</td>" + Number(rule.phones) +
           "<td>" + EscapeHtml((rule.isGone ? "gone: " : "") + rule.title) + places + "</td>";
}

std::string PairText(const ValuePair& pair, const ValueCount& count)
{
    const std::string change =
        pair.secret.empty() ? ValueWords(pair.before) + " \u2192 " + ValueWords(pair.after) : "secret: " + pair.secret;
    return EscapeHtml(change) + " " +
           Element("span", "dim", "\u00d7" + std::to_string(count.phones) + ", " + count.example);
}

std::string ValuesText(const PlaceCount& place)
{
    if (place.hasTooManyValues)
        return "more than " + std::to_string(kMostValues) + " different values, such as on " +
               EscapeHtml(place.example);
    std::vector<std::pair<ValuePair, ValueCount>> pairs(place.values.begin(), place.values.end());
    std::stable_sort(pairs.begin(), pairs.end(),
                     [](const auto& one, const auto& other) { return one.second.phones > other.second.phones; });
    std::string html;
    for (std::size_t i = 0; i < std::min(pairs.size(), kMostPairs); ++i)
        html += (i == 0 ? "" : "<br>") + PairText(pairs[i].first, pairs[i].second);
    if (pairs.size() > kMostPairs)
        html += "<br>" + Element("span", "dim", "and " + std::to_string(pairs.size() - kMostPairs) + " other pairs");
    return html.empty() ? Element("span", "dim", "such as on " + place.example) : html;
}

std::string PlaceCells(const PlaceCount& place)
{
    return Number(place.phones) + Place(PlaceText(place)) + "<td>" + EscapeHtml(CountWords(place.byKind)) +
           "</td><td>" + ValuesText(place) + "</td>";
}

std::string RecordCells(const RecordCount& record)
{
    std::string html =
        Number(static_cast<std::size_t>(record.line)) + Place(record.source + " \u2192 " + record.destination);
    for (const std::size_t phones : record.byOutcome)
        html += Number(phones);
    return html;
}

std::string ForgottenCells(const ForgottenCount& key)
{
    return Number(key.ownPhones) + Number(key.phones) + Place(PlaceText(key.file, key.section, key.key)) + "<td>" +
           EscapeHtml(key.example) + "</td>";
}

/// @return the address of a page, relative to the report
std::string LinkTo(const std::filesystem::path& path)
{
    std::ostringstream link;
    for (const char character : path.string()) {
        if (std::isalnum(static_cast<unsigned char>(character)) != 0 || std::strchr("-._~/", character) != nullptr)
            link << character;
        else
            link << '%' << std::hex << std::setw(2) << std::setfill('0') << int{static_cast<unsigned char>(character)};
    }
    return link.str();
}

/// @param link  address of the folder of pages
std::string PhoneCells(const PhoneRow& row, const std::filesystem::path& pages, const std::string& link)
{
    const char* ending = kEndings[static_cast<std::size_t>(row.ending)];
    std::string name = EscapeHtml(row.image);
    std::error_code ignored; // a page that cannot be looked at has no link
    if (const std::string page = PageName(row.image); !pages.empty() && std::filesystem::exists(pages / page, ignored))
        name = "<a href=\"" + link + "/" + page + "\">" + name + "</a>";
    std::string html = "<td>" + Element("span", ending, ending) + "</td><td class=\"name\">" + name + "</td>";
    if (!row.error.empty())
        return html + "<td colspan=\"3\">" + EscapeHtml(row.error) + "</td>";
    return html + Number(static_cast<std::size_t>(row.bySeverity[2])) +
           Number(static_cast<std::size_t>(row.bySeverity[1])) + Number(row.places);
}

} // namespace

std::string PageName(const std::string& image)
{
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string name;
    for (const char character : image) {
        const auto byte = static_cast<unsigned char>(character);
        const bool isPlain = std::isalnum(byte) != 0 || byte == '-' || byte == '_' || (byte == '.' && !name.empty());
        if (isPlain)
            name += character;
        else
            name.append({'~', kDigits[byte / 16], kDigits[byte % 16]});
    }
    if (name.size() > kLongestName) // "~~" begins no other name
        name =
            "~~" + std::to_string(std::hash<std::string>()(image)) + "-" + name.substr(name.size() - kLongestName / 2);
    return name + ".html";
}

std::string FleetPage(const FleetReport& report, const std::filesystem::path& pages,
                      const std::filesystem::path& folder)
{
    const std::string link = pages.empty() ? "" : LinkTo(std::filesystem::proximate(pages, folder));
    std::string body = "<h1>" + EscapeHtml(SummaryOf(report)) + "</h1>\n<ul class=\"tiles\">";
    for (std::size_t i = 0; i < kEndingCount; ++i)
        body += "<li class=\"" + std::string(kEndings[i]) + "\"><b>" + std::to_string(report.byEnding[i]) + "</b>" +
                kEndingWords[i] + "</li>";
    body += "</ul>\n";
    body += Table("Warnings", Heading({"rule", "phones", "what, and where"}), report.rules, RuleCells);
    body += Table(report.isDifference ? "Places that end different, the rarest first" : "Changes, the rarest first",
                  Heading({"phones", "place", "kind", "before \u2192 after"}), report.places, PlaceCells);
    body += Table("Records of the table, by phones",
                  Heading({"line", "record", "moved", "no source", "wrote empty", "nothing changed", "never ran"}),
                  report.records, RecordCells);
    body += Table("What the table forgets", Heading({"own value", "phones", "key", "such as"}), report.forgotten,
                  ForgottenCells);
    body += Table("Phones, worst first", Heading({"ends", "phone", "errors", "warnings", "places"}), report.phones,
                  [&](const PhoneRow& row) { return PhoneCells(row, pages, link); });
    return HtmlDocument(
        report.isDifference ? "What two upgrades do differently" : "What the upgrade does to all phones", body);
}
