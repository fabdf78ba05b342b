// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "htmlOutput.h"

#include "htmlChart.h"
#include "htmlText.h"
#include "summaryText.h"

namespace
{

std::string PassText(const std::vector<std::string>& passes)
{
    return passes.empty() ? std::string() : " " + Element("span", "pass", Join(passes, ", then "));
}

std::string Tile(const std::string& number, const std::string& what)
{
    return "<li><b>" + EscapeHtml(number) + "</b>" + EscapeHtml(what) + "</li>";
}

std::string Tiles(const Preview& preview)
{
    const Counts files = CountFiles(preview.files);
    const Counts values = CountValues(preview.files);
    return "<ul class=\"tiles\">" + Tile(std::to_string(files.Sum()), "files: " + CountWords(files)) +
           Tile(std::to_string(values.Sum()), "keys: " + CountWords(values)) +
           Tile(std::to_string(preview.warnings.size()), "warnings") +
           Tile(std::to_string(preview.secondRun.size()), "files that a second run would still change") + "</ul>\n";
}

std::string Warnings(const std::vector<ShownWarning>& warnings)
{
    std::string html;
    for (const ShownWarning& warning : warnings)
        html += "<div class=\"warning " + std::string(SeverityName(warning.severity)) + "\"><b>" +
                EscapeHtml(WordsOf(warning)) + "</b> " + EscapeHtml(warning.place) + "<br>" + EscapeHtml(warning.text) +
                "<br>" + Element("span", "dim", warning.advice) + "</div>\n";
    return html.empty() ? html : "<h2>Warnings</h2>\n" + html;
}

std::string Cell(const std::optional<std::string>& value)
{
    if (!value)
        return "<td></td>";
    if (value->empty())
        return "<td>" + Element("span", "dim", ValueWords(*value)) + "</td>";
    return "<td>" + EscapeHtml(ValueWords(*value)) + "</td>";
}

std::string RecordCells(const ShownChange& change)
{
    std::string attributes;
    for (const auto& [name, value] : change.attributes)
        attributes += (attributes.empty() ? "" : " ") + Element("span", "dim", name + "=") + EscapeHtml(value);
    const std::string cell = "<td>" + attributes + "</td>";
    return "<td class=\"name\">" + Breakable(change.group) + "</td>" +
           (change.kind == ChangeKind::Removed ? cell + "<td></td>" : "<td></td>" + cell);
}

std::string Row(const ShownChange& change, const ShownFile& file)
{
    const std::string place = file.format == "ini" ? "[" + change.group + "] " : change.group + " ";
    std::string html = "<tr><td>" + Element("span", KindWord(change.kind), KindWord(change.kind)) + "</td>";
    if (change.name.empty())
        html += RecordCells(change);
    else
        html += "<td class=\"name\"><span class=\"dim\">" + Breakable(place) + "</span>" + Breakable(change.name) +
                "</td>" + Cell(change.before) + Cell(change.after);
    html += "<td>" + EscapeHtml(change.secret);
    if (change.passes != file.passes)
        html += PassText(change.passes);
    return html + "</td></tr>\n";
}

const char* ClassOfDiffLine(const std::string& line)
{
    if (line.starts_with('+'))
        return "added";
    if (line.starts_with('-'))
        return "removed";
    return "dim";
}

std::string File(const ShownFile& file)
{
    std::string html = "<h3>" + EscapeHtml(file.path) + " " +
                       Element("span", KindWord(file.kind), KindWord(file.kind)) + PassText(file.passes) + "</h3>\n";
    if (!file.note.empty())
        html += "<p>" + Breakable(file.note) + "</p>\n";
    if (!file.changes.empty()) {
        html += "<div class=\"wide\"><table><tr><th></th><th>place</th><th>before</th><th>after</th><th></th></tr>\n";
        for (const ShownChange& change : file.changes)
            html += Row(change, file);
        html += "</table></div>\n";
    }
    if (!file.diff.empty()) {
        html += "<pre>";
        for (const std::string& line : file.diff)
            html += Element("span", ClassOfDiffLine(line), line) + "\n";
        html += "</pre>\n";
    }
    return html;
}

std::string Files(const char* title, const std::vector<ShownFile>& files)
{
    std::string html = "<h2>" + EscapeHtml(title) + "</h2>\n";
    for (const ShownFile& file : files)
        html += File(file);
    return files.empty() ? html + "<p>None.</p>\n" : html;
}

std::string Forgotten(const Preview& preview)
{
    std::string rows;
    for (const auto& [section, keys] : OwnForgotten(preview.forgotten))
        rows += "<tr><td class=\"name\">" + Element("span", "dim", section) + "</td><td>" + EscapeHtml(Join(keys)) +
                "</td></tr>\n";
    return rows.empty() ? rows
                        : "<h2>What the table forgets</h2>\n<div class=\"wide\"><table>" + rows + "</table></div>\n";
}

std::string Reports(const std::vector<ShownReports>& reports)
{
    std::string html;
    for (const ShownReports& report : reports)
        html += "<h2>Reports of mode " + EscapeHtml(report.mode) + "</h2>\n<pre>" +
                EscapeHtml(Join(report.output, "\n")) + "</pre>\n<pre>" + EscapeHtml(Join(report.errors, "\n")) +
                "</pre>\n";
    return html;
}

std::string Section(const Preview& preview, bool withReports)
{
    std::string html = "<section><h1>" + EscapeHtml(preview.image) + " " +
                       Element("span", "dim", "mode " + Join(preview.modes, ", then ")) + "</h1>\n";
    if (!preview.error.empty())
        return html + "<p>" + Element("span", "error", "error: " + preview.error) + "</p></section>\n";
    html += Tiles(preview) + ChangesChart(preview) + Warnings(preview.warnings) + Files("Changes", preview.files) +
            Forgotten(preview) + Files("What a second run would still change", preview.secondRun);
    return html + (withReports ? Reports(preview.reports) : std::string()) + "</section>\n";
}

} // namespace

std::string HtmlPage(const Preview& preview, bool withReports)
{
    return HtmlDocument("What the upgrade changes", Section(preview, withReports));
}
