// SPDX-License-Identifier: MIT
#include "common/selection.h"

#include "common/device_names.h"

#include <algorithm>
#include <cstring>
#include <fnmatch.h>

static bool matches(const char *pattern, const std::string &name)
{
    return fnmatch(pattern, name.c_str(), 0) == 0;
}

static bool match_one(const std::vector<const char *> &patterns, const std::string &name)
{
    return std::any_of(patterns.begin(), patterns.end(),
                       [&](const char *pattern) { return matches(pattern, name); });
}

bool Selection::chooses() const
{
    return !macs.empty() || !names.empty() || all_managed;
}

static bool is_in_state(const WtpRecord &wtp, std::string_view state)
{
    if (state == "upgrading")
        return is_in_upgrade(wtp);
    return (state == "online") == (wtp.state == WTP_ONLINE);
}

bool Selection::includes(const WtpRecord &wtp) const
{
    const std::string name(wtp.name);
    const bool chosen = !chooses() || macs.count(wtp.mac) != 0 || match_one(names, name) ||
                        (all_managed && wtp.managed != 0);
    return chosen && (kind == nullptr || std::string_view(kind) == kind_name(wtp.wtp_type)) &&
           (state == nullptr || is_in_state(wtp, state)) && excluded_macs.count(wtp.mac) == 0 &&
           !match_one(excluded_names, name);
}

SelectionCheck::SelectionCheck(const Selection &selection)
    : selection_(&selection), matched_(selection.names.size()),
      excluding_(selection.excluded_names.size())
{
}

void SelectionCheck::saw(const WtpRecord &wtp)
{
    if (selection_->macs.count(wtp.mac) != 0 || selection_->excluded_macs.count(wtp.mac) != 0)
        seen_.insert(wtp.mac);
    const std::string name(wtp.name);
    for (size_t i = 0; i < matched_.size(); i++)
        matched_[i] = matched_[i] || matches(selection_->names[i], name);
    for (size_t i = 0; i < excluding_.size(); i++)
        excluding_[i] = excluding_[i] || matches(selection_->excluded_names[i], name);
}

std::vector<Mac> SelectionCheck::missing_macs() const
{
    std::vector<Mac> missing;
    for (const auto &[mac, place] : selection_->macs)
        if (seen_.count(mac) == 0 && selection_->excluded_macs.count(mac) == 0)
            missing.push_back(mac);
    std::sort(missing.begin(), missing.end(), [this](const Mac &a, const Mac &b) {
        return selection_->macs.at(a) < selection_->macs.at(b);
    });
    return missing;
}

std::vector<std::string> SelectionCheck::unmatched_names() const
{
    std::vector<std::string> names;
    for (size_t i = 0; i < matched_.size(); i++)
        if (!matched_[i])
            names.emplace_back(selection_->names[i]);
    return names;
}

std::vector<std::string> SelectionCheck::idle_exclusions() const
{
    std::vector<std::string> idle;
    for (const Mac &mac : selection_->excluded_macs)
        if (seen_.count(mac) == 0)
            idle.emplace_back(mac_to_text(mac));
    for (size_t i = 0; i < excluding_.size(); i++)
        if (!excluding_[i])
            idle.emplace_back(selection_->excluded_names[i]);
    return idle;
}

// An address and nothing else: six parts of one or two digits.
static bool parse_whole_mac(const std::string &text, Mac &mac)
{
    size_t parts = 1, digits = 0;
    for (const char c : text) {
        if (c != ':' && isxdigit(static_cast<unsigned char>(c)) == 0)
            return false;
        digits = c == ':' ? 0 : digits + 1;
        parts += c == ':';
        if (digits > 2)
            return false;
    }
    return parts == 6 && parse_mac(text.c_str(), mac) && !mac.is_group();
}

bool take_macs(const char *text, Selection &to)
{
    for (std::string_view rest = text;;) {
        const size_t comma = std::min(rest.find(','), rest.size());
        Mac mac;
        if (!parse_whole_mac(std::string(rest.substr(0, comma)), mac))
            return false;
        to.macs.emplace(mac, to.macs.size());
        if (comma == rest.size())
            return true;
        rest.remove_prefix(comma + 1);
    }
}

bool take_name(const char *text, Selection &to)
{
    to.names.push_back(text);
    return *text != '\0';
}

bool take_exclusion(const char *text, Selection &to)
{
    Mac mac;
    if (parse_whole_mac(text, mac))
        to.excluded_macs.insert(mac);
    else if (strspn(text, "0123456789ABCDEFabcdef:,") == strlen(text) &&
             strchr(text, ':') != nullptr)
        return false; // a mistyped address, or a list
    else
        to.excluded_names.push_back(text);
    return *text != '\0';
}
