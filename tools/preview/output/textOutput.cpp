// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "textOutput.h"

#include <utility>

#include "summaryText.h"

namespace
{

constexpr char kBold[] = "1";
constexpr char kDim[] = "2";
constexpr char kRed[] = "31";
constexpr char kGreen[] = "32";
constexpr char kYellow[] = "33";
constexpr char kCyan[] = "36";

const char* ColourOf(ChangeKind kind)
{
    switch (kind) {
    case ChangeKind::Added:
        return kGreen;
    case ChangeKind::Changed:
        return kCyan;
    case ChangeKind::Emptied:
        return kYellow;
    case ChangeKind::Removed:
        return kRed;
    }
    return kBold;
}

const char* SignOf(ChangeKind kind)
{
    switch (kind) {
    case ChangeKind::Added:
        return "+";
    case ChangeKind::Changed:
        return "~";
    case ChangeKind::Emptied:
        return "!";
    case ChangeKind::Removed:
        return "-";
    }
    return "";
}

/// Writes the parts of one preview.
class TextWriter
{
public:
    TextWriter(std::ostream& out, const TextStyle& style) : out_(out), style_(style) {}

    void Write(const Preview& preview)
    {
        out_ << Paint(kBold, preview.image + ": mode " + Join(preview.modes, ", then ")) << "\n";
        out_ << SummaryLine(preview) << "\n";
        WriteWarnings(preview.warnings);
        if (preview.files.empty())
            out_ << "\nNothing changes.\n";
        for (const ShownFile& file : preview.files)
            WriteFile(file);
        WriteForgotten(preview);
        WriteSecondRun(preview);
        if (style_.withReports) {
            for (const ShownReports& reports : preview.reports)
                WriteReports(reports);
        }
    }

private:
    std::string Paint(const char* colour, const std::string& text) const
    {
        return style_.withColour ? std::string("\033[") + colour + "m" + text + "\033[0m" : text;
    }

    std::string PaintDiffLine(const std::string& line) const
    {
        if (line.starts_with('+'))
            return Paint(kGreen, line);
        if (line.starts_with('-'))
            return Paint(kRed, line);
        return line;
    }

    std::string PassWords(const std::vector<std::string>& passes) const
    {
        return passes.empty() ? std::string() : "  " + Paint(kDim, "(" + Join(passes, ", then ") + ")");
    }

    void WriteWarnings(const std::vector<ShownWarning>& warnings)
    {
        for (const ShownWarning& warning : warnings) {
            const char* colour = warning.severity == Severity::Error ? kRed : kYellow;
            out_ << "\n" << Paint(colour, WordsOf(warning)) << "  " << warning.place << "\n";
            out_ << "  " << warning.text << "\n";
            out_ << "  " << Paint(kDim, "-> " + warning.advice) << "\n";
        }
    }

    void WriteFile(const ShownFile& file)
    {
        out_ << "\n"
             << Paint(kBold, file.path) << "  " << Paint(ColourOf(file.kind), KindWord(file.kind))
             << PassWords(file.passes) << "\n";
        if (!file.note.empty())
            out_ << "  " << file.note << "\n";
        std::string group;
        for (const ShownChange& change : file.changes) {
            if (change.group != group && !change.name.empty())
                out_ << "  " << (file.format == "ini" ? "[" + change.group + "]" : change.group) << "\n";
            group = change.group;
            WriteChange(change, change.passes == file.passes ? std::vector<std::string>() : change.passes);
        }
        for (const std::string& line : file.diff)
            out_ << "  " << PaintDiffLine(line) << "\n";
    }

    /// @param passes  empty where they are those of the whole file
    void WriteChange(const ShownChange& change, const std::vector<std::string>& passes)
    {
        out_ << (change.name.empty() ? "  " : "    ") << Paint(ColourOf(change.kind), SignOf(change.kind)) << " ";
        if (change.name.empty())
            WriteRecord(change);
        else
            out_ << change.name << " = " << ChangeWords(change);
        out_ << PassWords(passes) << "\n";
    }

    void WriteRecord(const ShownChange& change)
    {
        out_ << change.group;
        for (const auto& [name, value] : change.attributes)
            out_ << "  " << Paint(kDim, name + "=") << '"' << value << '"';
    }

    static std::string ChangeWords(const ShownChange& change)
    {
        if (!change.secret.empty())
            return SecretWords(change);
        if (change.before && change.after)
            return ValueWords(*change.before) + " -> " + ValueWords(*change.after);
        return ValueWords(change.after ? *change.after : *change.before);
    }

    /// What became of a secret says more than the same mask twice. Revealed values that differ are both shown.
    static std::string SecretWords(const ShownChange& change)
    {
        const std::string before = change.before.value_or("");
        const std::string after = change.after.value_or("");
        std::string words = ValueWords(after.empty() ? before : after);
        if (!before.empty() && !after.empty() && before != after)
            words = ValueWords(before) + " -> " + words;
        return words + " (" + change.secret + ")";
    }

    void WriteForgotten(const Preview& preview)
    {
        std::string title = "\n" + Paint(kBold, "What the table forgets") + "\n";
        for (const auto& [section, keys] : OwnForgotten(preview.forgotten))
            out_ << std::exchange(title, "") << "  " << section << " " << Join(keys) << "\n";
    }

    void WriteSecondRun(const Preview& preview)
    {
        out_ << "\n" << Paint(kBold, "A second run") << " ";
        if (preview.secondRun.empty()) {
            out_ << "would change nothing more.\n";
            return;
        }
        out_ << "would still change: files: " << CountWords(CountFiles(preview.secondRun))
             << "; keys: " << CountWords(CountValues(preview.secondRun)) << "\n";
        for (const ShownFile& file : preview.secondRun)
            WriteFile(file);
    }

    void WriteReports(const ShownReports& reports)
    {
        out_ << "\n" << Paint(kBold, "Reports of mode " + reports.mode + ", standard output") << "\n";
        for (const std::string& line : reports.output)
            out_ << "  " << line << "\n";
        out_ << "\n" << Paint(kBold, "Reports of mode " + reports.mode + ", standard error") << "\n";
        for (const std::string& line : reports.errors)
            out_ << "  " << line << "\n";
    }

    std::ostream& out_;
    const TextStyle style_;
};

} // namespace

void WriteText(std::ostream& out, const Preview& preview, const TextStyle& style)
{
    TextWriter(out, style).Write(preview);
}
