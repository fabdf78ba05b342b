// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "htmlChart.h"

#include <algorithm>

#include "htmlText.h"

namespace
{

constexpr std::size_t kMostFiles = 12;

struct Bar {
    std::string label;
    int count;
};

int CountOf(const ShownChange& change)
{
    return change.name.empty() ? static_cast<int>(change.attributes.size()) : 1;
}

void Count(std::vector<Bar>& bars, const std::string& label, int count)
{
    const auto found = std::find_if(bars.begin(), bars.end(), [&label](const Bar& bar) { return bar.label == label; });
    if (found == bars.end())
        bars.push_back({label, count});
    else
        found->count += count;
}

/// In the order in which the passes ran; a file that was not taken apart counts as one.
std::vector<Bar> BarsByPass(const Preview& preview)
{
    std::vector<Bar> bars;
    for (const std::string& pass : preview.passes)
        Count(bars, pass, 0);
    for (const ShownFile& file : preview.files) {
        for (const ShownChange& change : file.changes) {
            for (const std::string& pass : change.passes)
                Count(bars, pass, CountOf(change));
        }
        if (file.changes.empty()) {
            for (const std::string& pass : file.passes)
                Count(bars, pass, 1);
        }
    }
    bars.erase(std::remove_if(bars.begin(), bars.end(), [](const Bar& bar) { return bar.count == 0; }), bars.end());
    return bars;
}

std::vector<Bar> BarsByFile(const Preview& preview)
{
    std::vector<Bar> bars;
    for (const ShownFile& file : preview.files) {
        int count = file.changes.empty() ? 1 : 0;
        for (const ShownChange& change : file.changes)
            count += CountOf(change);
        bars.push_back({file.path, count});
    }
    std::stable_sort(bars.begin(), bars.end(),
                     [](const Bar& one, const Bar& other) { return one.count > other.count; });
    if (bars.size() > kMostFiles)
        bars.resize(kMostFiles);
    return bars;
}

/// The text of a bar is HTML, which keeps its size on every screen; the bar is a drawing, which gets the width that is left.
std::string Row(const Bar& bar, int most)
{
    const std::string width = std::to_string(std::max(0.5, 100.0 * bar.count / most));
    return "<tr><th>" + Breakable(bar.label) +
           "</th><td><svg viewBox=\"0 0 100 1\" preserveAspectRatio=\"none\" aria-hidden=\"true\"><rect width=\"" +
           width + "\" height=\"1\"/></svg></td><td>" + std::to_string(bar.count) + "</td></tr>\n";
}

std::string Chart(const char* title, const std::vector<Bar>& bars)
{
    if (bars.empty())
        return std::string();
    int most = 1;
    for (const Bar& bar : bars)
        most = std::max(most, bar.count);
    std::string html = "<table class=\"chart\"><caption>" + EscapeHtml(title) + "</caption>\n";
    for (const Bar& bar : bars)
        html += Row(bar, most);
    return html + "</table>\n";
}

} // namespace

std::string ChangesChart(const Preview& preview)
{
    return Chart("Changes by pass", BarsByPass(preview)) + Chart("Changes by file", BarsByFile(preview));
}
