// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "htmlChart.h"

#include <algorithm>

#include "htmlText.h"

namespace
{

constexpr int kRowHeight = 20;
constexpr int kTextWidth = 280;
constexpr int kBarWidth = 260;
constexpr int kWidth = kTextWidth + kBarWidth + 60;
constexpr int kBaseLine = 14;
constexpr std::size_t kMostFiles = 12;
constexpr std::size_t kLongestLabel = 40;

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

/// Begins with what tells names apart: the end of a path.
std::string ShortLabel(const std::string& label)
{
    if (label.size() <= kLongestLabel)
        return label;
    std::size_t begin = label.size() - kLongestLabel;
    while (begin < label.size() && (static_cast<unsigned char>(label[begin]) & 0xC0) == 0x80)
        ++begin; // not within a character
    return "\u2026" + label.substr(begin);
}

std::string Number(int value)
{
    return std::to_string(value);
}

void Draw(std::string& svg, int& y, const char* title, const std::vector<Bar>& bars)
{
    int most = 1;
    for (const Bar& bar : bars)
        most = std::max(most, bar.count);
    svg += "<text x=\"0\" y=\"" + Number(y + kBaseLine) + "\" class=\"title\">" + EscapeHtml(title) + "</text>";
    y += kRowHeight;
    for (const Bar& bar : bars) {
        const int width = std::max(2, static_cast<int>(std::int64_t{bar.count} * kBarWidth / most));
        svg += "<text x=\"" + Number(kTextWidth - 8) + "\" y=\"" + Number(y + kBaseLine) + "\" text-anchor=\"end\">" +
               EscapeHtml(ShortLabel(bar.label)) + "</text>";
        svg += "<rect x=\"" + Number(kTextWidth) + "\" y=\"" + Number(y + 3) + "\" width=\"" + Number(width) +
               "\" height=\"" + Number(kRowHeight - 6) + "\"/>";
        svg += "<text x=\"" + Number(kTextWidth + width + 6) + "\" y=\"" + Number(y + kBaseLine) + "\">" +
               Number(bar.count) + "</text>";
        y += kRowHeight;
    }
    y += kRowHeight / 2;
}

} // namespace

std::string ChangesChart(const Preview& preview)
{
    if (preview.files.empty())
        return std::string();
    std::string bars;
    int height = 0;
    const std::vector<Bar> byPass = BarsByPass(preview);
    if (!byPass.empty())
        Draw(bars, height, "Changes by pass", byPass);
    Draw(bars, height, "Changes by file", BarsByFile(preview));
    return "<svg viewBox=\"0 0 " + Number(kWidth) + " " + Number(height) +
           "\" role=\"img\" aria-label=\"Changes by pass and by file\">" + bars + "</svg>\n";
}
