// SPDX-License-Identifier: MIT
#include "apply/plan_text.h"

#include "common/address_text.h"
#include "common/device_names.h"
#include "common/plain_text.h"
#include "common/table.h"
#include "course/program.h"

#include <algorithm>
#include <set>

using Json = nlohmann::ordered_json;

static DeviceKind kind_of(const PlannedDevice &device)
{
    return static_cast<DeviceKind>(device.kind);
}

static bool is_risky(const Difference &one)
{
    const auto marks = [](const SettingColumn &column) {
        return column.has_mark(MARK_RISKY) || column.has_mark(MARK_CUTS_PORT);
    };
    if (one.column->table == nullptr)
        return marks(*one.column);
    return one.kind == Difference::removed &&
           std::any_of(one.column->table->columns.begin(), one.column->table->columns.end(), marks);
}

// What a change may do besides; empty: nothing.
static std::string risk_text(const Difference &one, const PlannedDevice &device,
                             const ApplyPlan &plan)
{
    if (!is_risky(one))
        return "";
    if (one.column->has_mark(MARK_RISKY))
        return "may cut the device off";
    if (one.port == 0)
        return "may cut off what is connected to its ports";
    const auto found = plan.connected.find({device.mac, one.port});
    return "may cut off what is connected to port " + std::to_string(one.port) +
           (found == plan.connected.end() ? "" : ", " + name_text(found->second));
}

// How many of the differences from this one on are of settings in the element that it adds.
static size_t settings_below(const std::vector<Difference> &differences, size_t element)
{
    const Difference &added = differences[element];
    size_t count = 0;
    if (added.kind == Difference::added && added.column->table != nullptr)
        while (element + count + 1 < differences.size() &&
               differences[element + count + 1].path.starts_with(added.path + "."))
            count++;
    return count;
}

// A line for each; of an element that is added with very many settings one for all.
static std::string changes_text(const PlannedDevice &device, const ApplyPlan &plan)
{
    enum : size_t { SETTINGS_SHOWN = 8 };
    std::string text;
    for (size_t i = 0; i < device.differences.size(); i++) {
        const Difference &one = device.differences[i];
        const std::string risk = risk_text(one, device, plan);
        const size_t below = settings_below(device.differences, i);
        text += "  " + difference_text(one, kind_of(device));
        if (below > SETTINGS_SHOWN) {
            text += " with " + number_of(below, "setting");
            i += below;
        }
        text += (risk.empty() ? "" : "  ! " + risk) + "\n";
    }
    return text;
}

static std::string name_of(const PlannedDevice &device)
{
    const std::string name = device.name.empty() ? mac_name(device.mac) : name_text(device.name);
    return device.busy_with.empty() ? name : name + " (" + device.busy_with + ")";
}

// "3 devices: ap-1, ap-2, ap-3", with the first few of many.
static std::string devices_text(const std::vector<const PlannedDevice *> &devices)
{
    enum : size_t { NAMES_MAX = 8 };
    std::string text = number_of(devices.size(), "device") + ":";
    for (size_t i = 0; i < std::min<size_t>(devices.size(), NAMES_MAX); i++)
        text += (i == 0 ? " " : ", ") + name_of(*devices[i]);
    if (devices.size() > NAMES_MAX)
        text += " and " + std::to_string(devices.size() - NAMES_MAX) + " more";
    return text;
}

static std::vector<std::string> totals(const ApplyPlan &plan)
{
    size_t differing = 0, equal = 0, unclear = 0, not_ready = 0, risks = 0;
    for (const PlannedDevice &device : plan.devices) {
        differing += device.differs();
        unclear += !device.problem.empty();
        equal += !device.differs() && device.problem.empty();
        not_ready += device.differs() && !device.busy_with.empty();
        for (const Difference &one : device.differences)
            risks += is_risky(one);
    }
    std::vector<std::string> lines = {
        number_of(differing, "device") + " to change, " + std::to_string(equal) + " as wanted" +
        (unclear == 0 ? ""
                      : ", " + std::to_string(unclear) + " that cannot be compared or changed so")};
    if (not_ready > 0)
        lines.push_back(number_of(not_ready, "device") + " of these cannot be changed now");
    if (plan.removals() > 0)
        lines.push_back(number_of(plan.removals(), "element") +
                        " will be removed, with all their settings");
    if (risks > 0)
        lines.push_back(number_of(risks, "change") + " may cut something off");
    return lines;
}

std::vector<std::string> plan_lines(const ApplyPlan &plan)
{
    std::vector<std::string> lines;
    std::vector<std::pair<std::string, std::vector<const PlannedDevice *>>> blocks;
    std::map<std::string, size_t> places;
    for (const PlannedDevice &device : plan.devices) {
        if (!device.problem.empty())
            lines.push_back(mac_name(device.mac) + " " + name_text(device.name) + ": " +
                            plain_text(device.problem));
        if (!device.differs())
            continue;
        const std::string changes = changes_text(device, plan);
        const auto [place, is_new] = places.emplace(changes, blocks.size());
        if (is_new)
            blocks.push_back({changes, {}});
        blocks[place->second].second.push_back(&device);
    }
    for (const std::string &note : plan.notes)
        lines.push_back("note: " + plain_text(note));
    for (const auto &[changes, devices] : blocks) {
        lines.push_back(devices_text(devices));
        lines.push_back(changes.substr(0, changes.size() - 1));
    }
    for (const std::string &total : totals(plan))
        lines.push_back(total);
    return lines;
}

std::string question_text(const ApplyPlan &plan)
{
    std::set<std::string> paths;
    size_t devices = 0;
    for (const PlannedDevice &device : plan.devices) {
        devices += device.batch > 0;
        for (const Difference &one : device.differences)
            if (device.batch > 0)
                paths.insert(one.path);
    }
    return "Change " + number_of(paths.size(), "setting") + " on " + number_of(devices, "device") +
           " in " + std::to_string(plan.batches) + (plan.batches == 1 ? " batch?" : " batches?");
}

static Json value_or_null(bool has_value, const Difference &one, const std::string &bytes,
                          DeviceKind kind)
{
    return has_value && one.column->table == nullptr ? Json(value_text_of(*one.column, kind, bytes))
                                                     : Json();
}

static Json json_of(const Difference &one, const PlannedDevice &device, const ApplyPlan &plan)
{
    static constexpr const char *NAMES[] = {"changed", "added", "removed"};
    const std::string risk = risk_text(one, device, plan);
    return {
        {"path", one.path},
        {"label", one.label.empty() ? Json() : Json(one.label)},
        {"change", NAMES[one.kind]},
        {"from", value_or_null(one.kind == Difference::changed, one, one.from, kind_of(device))},
        {"to", value_or_null(one.kind != Difference::removed, one, one.to, kind_of(device))},
        {"risk", risk.empty() ? Json() : Json(risk)}};
}

Json device_json(const PlannedDevice &device, const ApplyPlan &plan)
{
    Json differences = Json::array();
    for (const Difference &one : device.differences)
        differences.push_back(json_of(one, device, plan));
    return {{"mac", mac_name(device.mac)},
            {"name", device.name},
            {"kind", kind_name(device.kind)},
            {"model", device.model},
            {"batch", device.batch == 0 ? Json() : Json(device.batch)},
            {"differences", std::move(differences)}};
}

Json plan_json(const ApplyPlan &plan, const ApplySettings &settings)
{
    Json devices = Json::array();
    for (const PlannedDevice &device : plan.devices) {
        Json made = device_json(device, plan);
        const std::string &reason = device.problem.empty() ? device.busy_with : device.problem;
        made["result"] = !device.problem.empty() ? "not compared"
                         : device.differs()      ? "differs"
                                                 : "as wanted";
        made["reason"] = reason.empty() ? Json() : Json(reason);
        devices.push_back(std::move(made));
    }
    return {{"document", "plan"},
            {"controller", settings.address + (":" + std::to_string(settings.port))},
            {"status", plan_status(plan)},
            {"batches", plan.batches},
            {"notes", plan.notes},
            {"devices", std::move(devices)}};
}

int plan_status(const ApplyPlan &plan)
{
    const auto any = [&](auto is) {
        return std::any_of(plan.devices.begin(), plan.devices.end(), is);
    };
    if (any([](const PlannedDevice &device) { return device.differs(); }))
        return STOPPED;
    return any([](const PlannedDevice &device) { return !device.problem.empty(); }) ? SOME_FAILED
                                                                                    : ALL_DONE;
}
