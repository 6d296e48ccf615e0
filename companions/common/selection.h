// SPDX-License-Identifier: MIT
// Which devices a companion tool is about.
#pragma once

#include "common/command_line.h"
#include "device/wtp_list.h"
#include "util/mac.h"

#include <map>
#include <set>
#include <string>
#include <vector>

// --mac, --name and --all-managed choose, as a union; the others take away from what is chosen. The
// settings of each program that selects derive from it.
struct Selection {
    std::map<Mac, size_t> macs;      // with their places in the order in which they were given
    std::vector<const char *> names; // patterns, see fnmatch(3)
    bool all_managed = false;
    const char *kind = nullptr, *state = nullptr; // a word of KIND_NAMES, STATE_NAMES
    std::set<Mac> excluded_macs;
    std::vector<const char *> excluded_names;

    // Whether one of the first three is given. Without, all devices are chosen.
    [[nodiscard]] bool chooses() const;

    [[nodiscard]] bool includes(const WtpRecord &wtp) const;
};

inline constexpr const char *KIND_NAMES = "access_point switch other";
inline constexpr const char *STATE_NAMES = "online offline upgrading";

// Keeps what was asked for and did not come up in the list.
class SelectionCheck {
public:
    explicit SelectionCheck(const Selection &selection);

    void saw(const WtpRecord &wtp);

    // Addresses that were given and no device has, in their order; patterns that match no name; and
    // exclusions that exclude nothing.
    [[nodiscard]] std::vector<Mac> missing_macs() const;
    [[nodiscard]] std::vector<std::string> unmatched_names() const;
    [[nodiscard]] std::vector<std::string> idle_exclusions() const;

private:
    const Selection *selection_;
    std::set<Mac> seen_;
    std::vector<bool> matched_, excluding_; // for each of the patterns
};

bool take_macs(const char *text, Selection &to);
bool take_name(const char *text, Selection &to);
bool take_exclusion(const char *text, Selection &to);

// clang-format off
#define SELECTION_OPTIONS                                                                          \
    {{.name = "mac", .argument = "LIST", .help = "choose these devices, in this order",            \
      .repeatable = true, .expected = "addresses joined by commas"},                               \
     [](const char *text, auto &to) { return take_macs(text, to); }},                              \
    {{.name = "name", .argument = "GLOB", .help = "choose the devices whose name matches",         \
      .repeatable = true, .expected = "a pattern"},                                                \
     [](const char *text, auto &to) { return take_name(text, to); }},                              \
    {{.name = "all-managed", .argument = nullptr, .help = "choose all devices under management"},  \
     [](const char *, auto &to) { return take_flag(to.all_managed); }},                            \
    {{.name = "kind", .argument = "KIND", .help = "of these only the devices of a kind",           \
      .values = KIND_NAMES},                                                                       \
     [](const char *text, auto &to) { return take_word(text, KIND_NAMES, to.kind); }},             \
    {{.name = "state", .argument = "STATE", .help = "of these only the devices in a state",        \
      .values = STATE_NAMES},                                                                      \
     [](const char *text, auto &to) { return take_word(text, STATE_NAMES, to.state); }},           \
    {{.name = "exclude", .argument = "WHAT", .help = "none with this address or matching name",    \
      .repeatable = true, .expected = "an address or a pattern"},                                  \
     [](const char *text, auto &to) { return take_exclusion(text, to); }}
// clang-format on
