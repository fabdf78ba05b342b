// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "shownReports.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "phoneImage/printable.h"

namespace
{

/// Reports that hold names and paths alone.
constexpr std::string_view kWithoutValues[] = {
    "chTraceStack: ",
    "app_log ",
    "bEncrypt=",
    "The file [",
    "Can's load ",
    "etlTrace 2: The",
    "etlTrace 2: Can't load the",
    "etlTrace 3: Fail to load file [/",
};

std::string Rest(const std::string& line, std::string_view beginning)
{
    return line.substr(beginning.size());
}

/// Hides the values in the table's reports. A record has up to three lines, of which the last names its place. A line
/// break in a value or a name makes more of them: what stands on those is nothing but hidden.
class OutputHider
{
public:
    OutputHider(const std::vector<TableRecord>& records, const Secrets& secrets) : records_(records), secrets_(secrets)
    {
    }

    void Add(const std::string& line)
    {
        if (line.starts_with(kSourceReport) || line.starts_with(kCipherReport)) {
            isBroken_ = false;
            waiting_.push_back(line);
        } else if (line.starts_with(kRecordReport)) {
            AddRecord(line);
        } else {
            isBroken_ = isBroken_ || !waiting_.empty();
            Flush(/*isSecret=*/true);
            hidden_.push_back(isBroken_ ? secrets_.Mask(line) : HideUnknown(line));
        }
    }

    std::vector<std::string> Take()
    {
        Flush(/*isSecret=*/true);
        return std::move(hidden_);
    }

    static bool HasNoValues(const std::string& line)
    {
        for (const std::string_view beginning : kWithoutValues) {
            if (line.starts_with(beginning))
                return true;
        }
        return false;
    }

private:
    void AddRecord(const std::string& line)
    {
        const TableRecord* record = next_ < records_.size() ? &records_[next_++] : nullptr;
        const auto parts = record == nullptr ? std::nullopt : SplitRecordLine(line, *record);
        isBroken_ = !parts;
        if (isBroken_) { // names that break the line: nobody knows where the value begins
            Flush(/*isSecret=*/true);
            hidden_.push_back(std::string(kRecordReport) + secrets_.Mask(Rest(line, kRecordReport)));
            return;
        }
        const bool isSecret = secrets_.IsSecret(*record) || parts->tail.back() == '1';
        Flush(isSecret);
        hidden_.push_back(parts->head + HideValue(parts->value, isSecret) + parts->tail);
    }

    void Flush(bool isSecret)
    {
        for (const std::string& line : waiting_) {
            if (line.starts_with(kSourceReport)) {
                hidden_.push_back(std::string(kSourceReport) + HideValue(Rest(line, kSourceReport), isSecret));
                continue;
            }
            const std::string rest = Rest(line, kCipherReport);
            const std::size_t comma = std::min(rest.size(), rest.rfind(", "));
            hidden_.push_back(std::string(kCipherReport) + HideValue(rest.substr(0, comma), isSecret) +
                              rest.substr(comma));
        }
        waiting_.clear();
    }

    std::string HideValue(const std::string& value, bool isSecret) const
    {
        return isSecret ? secrets_.Mask(value) : secrets_.Hide(value);
    }

    std::string HideUnknown(const std::string& line) const { return HasNoValues(line) ? line : secrets_.Hide(line); }

    const std::vector<TableRecord>& records_;
    const Secrets& secrets_;
    std::size_t next_ = 0;
    bool isBroken_ = false; ///< the line before this one does not end where it should
    std::vector<std::string> waiting_;
    std::vector<std::string> hidden_;
};

/// Hides the values in the traces. The password pass traces secrets alone: "etlTrace 2: Encrypt:(old)->(new)". A secret
/// with a line break goes on, up to the bracket, on lines that say nothing else.
class ErrorHider
{
public:
    explicit ErrorHider(const Secrets& secrets) : secrets_(secrets) {}

    std::string Hide(const std::string& line)
    {
        const std::size_t value = ValueAt(line);
        if (value != std::string::npos)
            return HideTraced(line, value);
        const bool isKnown = OutputHider::HasNoValues(line);
        if (!isOpen_)
            return isKnown ? line : secrets_.Hide(line);
        isOpen_ = line.empty() || line.back() != ')';
        return isKnown ? secrets_.Hide(line) : secrets_.Mask(line);
    }

private:
    /// @return where the traced value begins; npos for a line of another kind
    static std::size_t ValueAt(const std::string& line)
    {
        for (const std::string_view direction : {": Encrypt:(", ": Decrypt:("}) {
            const std::size_t begin = line.find(direction);
            if (line.starts_with("etlTrace ") && begin <= sizeof "etlTrace 000")
                return begin + direction.size();
        }
        return std::string::npos;
    }

    std::string HideTraced(const std::string& line, std::size_t value)
    {
        const std::size_t middle = line.rfind(")->(");
        isOpen_ = middle == std::string::npos || middle < value || line.back() != ')';
        if (isOpen_)
            return line.substr(0, value) + secrets_.Mask(line.substr(value));
        return line.substr(0, value) + secrets_.Mask(line.substr(value, middle - value)) + ")->(" +
               secrets_.Mask(line.substr(middle + 4, line.size() - middle - 5)) + ")";
    }

    const Secrets& secrets_;
    bool isOpen_ = false; ///< the value that was traced last has not ended
};

} // namespace

ShownReports ShowReports(const RunReports& reports, const std::vector<TableRecord>& records, const Secrets& secrets)
{
    ShownReports shown;
    shown.mode = Printable(reports.mode);
    OutputHider hider(records, secrets);
    for (const std::string& line : SplitLines(reports.output))
        hider.Add(line);
    for (const std::string& line : hider.Take())
        shown.output.push_back(Printable(line));
    ErrorHider errorHider(secrets);
    for (const std::string& line : SplitLines(reports.errors))
        shown.errors.push_back(Printable(errorHider.Hide(line)));
    return shown;
}
