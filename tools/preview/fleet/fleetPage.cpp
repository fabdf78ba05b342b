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

/// @param of  what is counted; a narrow screen shows it after the number instead of the heading
std::string Number(std::size_t number, const char* of)
{
    return std::string("<td class=\"number") + (number == 0 ? " zero" : "") + "\" data-of=\"" + of + "\">" +
           std::to_string(number) + "</td>";
}

/// @param key  "[section] key" or what an XML file has instead; empty for a whole file
std::string PlaceCell(const std::string& file, const std::string& key)
{
    const std::string path = "<span class=\"dim\">" + Breakable(file) + "</span>";
    return "<td class=\"name\">" + (key.empty() ? Breakable(file) : Breakable(key) + "<br>" + path) + "</td>";
}

/// @return a path as an address
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

/// Where the pages of phones are.
struct Pages {
    std::filesystem::path folder; ///< empty for none
    std::string link;             ///< address of the folder, relative to the report
};

/// The name of a phone, with a link to its page if there is one.
std::string PhoneName(const std::string& image, const Pages& pages)
{
    const std::string page = PageName(image);
    std::error_code ignored; // a page that cannot be looked at has no link
    if (pages.folder.empty() || !std::filesystem::exists(pages.folder / page, ignored))
        return Breakable(image);
    return "<a href=\"" + pages.link + "/" + page + "\">" + Breakable(image) + "</a>";
}

/// A section with a table; empty when the list is.
///
/// @param name  its class and anchor
template <typename List, typename ToRow>
std::string Table(const char* name, const std::string& title, std::initializer_list<const char*> columns,
                  const List& list, ToRow toRow)
{
    if (list.empty())
        return std::string();
    std::string html =
        "<h2 id=\"" + std::string(name) + "\">" + title + "</h2>\n<table class=\"fleet " + name + "\"><thead><tr>";
    for (const char* column : columns)
        html += std::string("<th>") + column + "</th>";
    html += "</tr></thead>\n<tbody>\n";
    for (std::size_t i = 0; i < std::min(list.size(), kMostRows); ++i)
        html += "<tr>" + toRow(list[i]) + "</tr>\n";
    html += "</tbody></table>\n";
    if (list.size() > kMostRows)
        html += "<p>And " + std::to_string(list.size() - kMostRows) + " more, which the JSON has.</p>\n";
    return html;
}

std::string RuleCells(const RuleCount& rule, const Pages& pages)
{
    const std::string severity(SeverityName(rule.severity));
    std::string places;
    for (std::size_t i = 0; i < std::min(rule.places.size(), kMostPlaces); ++i)
        places += "<div class=\"dim\">" + std::to_string(rule.places[i].phones) + " \u00d7 " +
                  Breakable(rule.places[i].place) + ", such as " + PhoneName(rule.places[i].example, pages) + "</div>";
    if (rule.places.size() > kMostPlaces)
        places += Element("div", "dim", "and at " + std::to_string(rule.places.size() - kMostPlaces) + " more places");
    return "<td>" + Element("span", ("pill " + severity).c_str(), severity) + " " + rule.rule + "</td>" +
           Number(rule.phones, "phones") + "<td>" + EscapeHtml((rule.isGone ? "gone: " : "") + rule.title) + places +
           "</td>";
}

/// @param kinds  a key that all phones add had no value, and one that all of them remove has none
std::string PairText(const ValuePair& pair, const Counts& kinds)
{
    if (!pair.secret.empty())
        return "secret: " + pair.secret;
    if (kinds[ChangeKind::Added] == kinds.Sum())
        return ValueWords(pair.after);
    if (kinds[ChangeKind::Removed] == kinds.Sum())
        return ValueWords(pair.before);
    return ValueWords(pair.before) + " \u2192 " + ValueWords(pair.after);
}

std::string ValuesText(const PlaceCount& place, const Pages& pages)
{
    const std::string example = "<span class=\"dim\">such as " + PhoneName(place.example, pages) + "</span>";
    if (place.hasTooManyValues)
        return "more than " + std::to_string(kMostValues) + " different values, " + example;
    std::vector<std::pair<ValuePair, ValueCount>> pairs(place.values.begin(), place.values.end());
    std::stable_sort(pairs.begin(), pairs.end(),
                     [](const auto& one, const auto& other) { return one.second.phones > other.second.phones; });
    std::string html;
    for (std::size_t i = 0; i < std::min(pairs.size(), kMostPairs); ++i)
        html += "<div>" + Breakable(PairText(pairs[i].first, place.byKind)) + " <span class=\"dim\">" +
                std::to_string(pairs[i].second.phones) + " \u00d7, such as " +
                PhoneName(pairs[i].second.example, pages) + "</span></div>";
    if (pairs.size() > kMostPairs)
        html += Element("div", "dim", "and " + std::to_string(pairs.size() - kMostPairs) + " other pairs");
    return html.empty() ? example : html;
}

/// "added", or "2 added, 1 changed".
std::string KindsText(const PlaceCount& place)
{
    std::string html;
    for (const ChangeKind kind : kChangeKinds) {
        if (const int count = place.byKind[kind]; count != 0)
            html += (html.empty() ? "" : "<br>") +
                    Element("span", KindWord(kind),
                            (count == place.byKind.Sum() ? "" : std::to_string(count) + " ") + KindWord(kind));
    }
    return html;
}

std::string PlaceCells(const PlaceCount& place, const Pages& pages)
{
    const std::string text = PlaceText(place);
    const std::string key = text == place.file ? "" : text.substr(place.file.size() + 1);
    return Number(place.phones, "phones") + PlaceCell(place.file, key) + "<td>" + KindsText(place) + "</td><td>" +
           ValuesText(place, pages) + "</td>";
}

std::string RecordCells(const RecordCount& record)
{
    std::string html =
        Number(static_cast<std::size_t>(record.line), "line") + "<td class=\"name\">" + Breakable(record.source);
    if (record.destination != record.source)
        html += "<br>\u2192 " + Breakable(record.destination);
    html += "</td>";
    for (std::size_t i = 0; i < record.byOutcome.size(); ++i)
        html += Number(record.byOutcome[i], OutcomeWords(static_cast<RecordOutcome>(i)));
    return html;
}

std::string ForgottenCells(const ForgottenCount& key, const Pages& pages)
{
    return Number(key.ownPhones, "own values") + Number(key.phones, "phones") +
           PlaceCell(key.file, "[" + key.section + "] " + key.key) + "<td>" + PhoneName(key.example, pages) + "</td>";
}

std::string PhoneCells(const PhoneRow& row, const Pages& pages)
{
    const std::string ending = kEndings[static_cast<std::size_t>(row.ending)];
    const std::string html = "<td>" + Element("span", ("pill " + ending).c_str(), ending) + "</td><td class=\"name\">" +
                             PhoneName(row.image, pages) + "</td>";
    if (!row.error.empty())
        return html + "<td colspan=\"3\">" + EscapeHtml(row.error) + "</td>";
    return html + Number(static_cast<std::size_t>(row.bySeverity[2]), "errors") +
           Number(static_cast<std::size_t>(row.bySeverity[1]), "warnings") + Number(row.places, "places");
}

std::string Tile(const char* ending, const std::string& words, std::size_t phones)
{
    return "<li class=\"" + std::string(ending) + "\"><b>" + std::to_string(phones) + "</b>" + words + "</li>";
}

/// How many phones end how, in numbers and as a bar.
std::string Endings(const FleetReport& report)
{
    std::string tiles;
    std::string bar;
    std::size_t left = 0;
    for (std::size_t i = 0; i < kEndingCount; ++i) {
        tiles += Tile(kEndings[i], kEndingWords[i], report.byEnding[i]);
        bar += "<rect class=\"" + std::string(kEndings[i]) + "\" x=\"" + std::to_string(left) + "\" width=\"" +
               std::to_string(report.byEnding[i]) + "\" height=\"1\"/>";
        left += report.byEnding[i];
    }
    return "<ul class=\"tiles\" id=\"endings\">" + tiles + "</ul>\n<svg class=\"shares\" viewBox=\"0 0 " +
           std::to_string(left) + " 1\" preserveAspectRatio=\"none\" aria-hidden=\"true\">" + bar + "</svg>\n";
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
    const Pages links = {pages, pages.empty() ? "" : LinkTo(std::filesystem::proximate(pages, folder))};
    const auto with = [&links](auto toCells) {
        return [&links, toCells](const auto& row) { return toCells(row, links); };
    };
    const std::string title =
        report.isDifference ? "What two upgrades do differently" : "What the upgrade does to all phones";
    std::string body = "<h1>" + title + "</h1>\n<p class=\"dim\">" + EscapeHtml(SummaryOf(report)) + "</p>\n";
    if (!report.isDifference)
        body += Endings(report);
    body += Table("warnings", "Warnings", {"rule", "phones", "what, and where"}, report.rules, with(RuleCells));
    body += Table("places",
                  report.isDifference ? "Places that end different, the rarest first" : "Changes, the rarest first",
                  {"phones", "place", "kind", "before \u2192 after"}, report.places, with(PlaceCells));
    body += Table("records", "Records of the table, by phones",
                  {"line", "record", "moved", "no source", "wrote empty", "nothing changed", "never ran"},
                  report.records, RecordCells);
    body += Table("forgotten", "What the table forgets", {"own values", "phones", "key", "such as"}, report.forgotten,
                  with(ForgottenCells));
    body += Table("phones", "Phones, worst first", {"ends", "phone", "errors", "warnings", "places"}, report.phones,
                  with(PhoneCells));
    return HtmlDocument(title, body);
}
