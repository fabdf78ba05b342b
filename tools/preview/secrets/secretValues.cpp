// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "secretValues.h"

#include <algorithm>

namespace
{

std::string_view Trim(std::string_view text)
{
    constexpr std::string_view kSpace = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(kSpace);
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(kSpace) - begin + 1);
}

std::string FormOf(int layers)
{
    if (layers == 0)
        return "plain";
    return layers == 1 ? "enciphered" : "enciphered twice";
}

} // namespace

void SecretValues::Add(std::string_view value)
{
    if (!value.empty())
        values_.try_emplace(std::string(value));
    while (!value.empty()) {
        const std::size_t end = std::min(value.size(), value.find('\n'));
        const std::string_view line = Trim(value.substr(0, end));
        if (!line.empty())
            values_.try_emplace(std::string(line));
        value.remove_prefix(std::min(value.size(), end + 1));
    }
}

void SecretValues::AddPlain(const std::string& value, const std::vector<std::string>& plain)
{
    if (plain.empty())
        return;
    values_[value] = plain;
    for (auto layer = plain.begin(); layer != plain.end(); ++layer) {
        Add(*layer);
        values_[*layer].assign(layer + 1, plain.end());
    }
}

int SecretValues::LayersOf(const std::string& value) const
{
    const auto found = values_.find(value);
    return found == values_.end() ? 0 : static_cast<int>(found->second.size());
}

std::string SecretValues::CoreOf(const std::string& value) const
{
    const auto found = values_.find(value);
    return found == values_.end() || found->second.empty() ? value : found->second.back();
}

std::string SecretValues::Relation(const std::optional<std::string>& before,
                                   const std::optional<std::string>& after) const
{
    if (!after)
        return "removed";
    const int layers = LayersOf(*after);
    const std::string form = FormOf(layers);
    if (!before)
        return after->empty() ? "added, empty" : "added, " + form;
    if (after->empty())
        return "emptied";
    if (before->empty())
        return "set, " + form;
    if (CoreOf(*before) != CoreOf(*after) || LayersOf(*before) == layers)
        return "changed, " + form;
    if (layers > 1)
        return "enciphered twice";
    return "same, now " + form;
}
