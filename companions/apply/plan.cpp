// SPDX-License-Identifier: MIT
#include "apply/plan.h"

#include "apply/merge.h"
#include "common/address_text.h"
#include "common/device_names.h"
#include "common/table.h"
#include "course/choice.h"
#include "course/program.h"
#include "course/requests.h"
#include "documents/item_reader.h"

#include <algorithm>
#include <set>

size_t ApplyPlan::removals() const
{
    size_t count = 0;
    for (const PlannedDevice &device : devices)
        for (const Difference &one : device.differences)
            count += one.kind == Difference::removed && device.batch > 0;
    return count;
}

// What no request could carry: more elements than an index byte tells apart, values of more bytes
// than a length has bits, and two elements of one port.
static std::string why_not_sendable(const ConfigRow &row, const SettingTable &table,
                                    const std::string &above)
{
    for (size_t i = 0; i < row.cells.size(); i++) {
        const SettingColumn &column = table.columns[i];
        const ConfigCell &cell = row.cells[i];
        const std::string path = array_path(above, column);
        if (cell.value && cell.value->size() > CONFIG_VALUE_BYTES_MAX)
            return path + " is too long to be sent";
        if (cell.rows.size() > CONFIG_ELEMENTS_MAX)
            return path + " has too many elements to be sent";
        std::set<std::string> ports;
        for (size_t at = 0; at < cell.rows.size(); at++) {
            if (column.table->port != SettingTable::NONE && !column.has_mark(MARK_STATE)) {
                const auto &port = cell.rows[at].cells[column.table->port].value;
                if (port && !ports.insert(*port).second)
                    return path + " has port " + std::to_string(bytes_number(*port)) + " twice";
            }
            std::string why = why_not_sendable(cell.rows[at], *column.table,
                                               path + "[" + std::to_string(at) + "]");
            if (!why.empty())
                return why;
        }
    }
    return "";
}

WantedConfig want(const ConfigRow &stored, const std::vector<const Document *> &documents,
                  DeviceKind kind)
{
    WantedConfig wanted = {stored, {}, "", {}};
    wanted.merged = lay_over(wanted.row, documents, kind);
    if (!wanted.merged.problems.empty()) {
        wanted.problem = wanted.merged.problems.front().text;
        return wanted;
    }
    wanted.differences = compare(stored, wanted.row, kind);
    if (!wanted.differences.empty())
        wanted.problem = why_not_sendable(wanted.row, setting_table(kind), "");
    if (!wanted.problem.empty())
        wanted.differences.clear();
    return wanted;
}

std::string items_of_members(const ConfigRow &row, const std::vector<Difference> &differences,
                             DeviceKind kind, bool with_state)
{
    std::set<size_t> members;
    for (const Difference &one : differences)
        members.insert(one.member);
    TlvBuffer items;
    for (const size_t member : members)
        append_items(items, setting_table(kind), row, member, with_state);
    return std::string(items.bytes());
}

namespace {

class Planner {
public:
    Planner(const ApplySettings &settings, const Sources &sources)
        : settings_(settings), sources_(sources)
    {
        if (!settings_.chooses())
            for (const auto &[mac, documents] : sources.own)
                settings_.macs.emplace(mac, settings_.macs.size());
    }

    ApplyPlan make();

private:
    template <class Ask> void ask(Ask ask) { ask_patiently(settings_.timeout, answered_, ask); }

    void read_list();
    bool is_unmentioned(const PlannedDevice &device) const;
    void drop_unmentioned();
    size_t count_kind(uint8_t kind) const;
    void note_gone(const std::set<Mac> &listed);
    void check_refusals() const;
    void check_reach();
    void compare_all();
    void compare_one(const WtpRecord &wtp, PlannedDevice &device);
    void note_overridden(const std::vector<const Document *> &documents, const WantedConfig &wanted,
                         const Mac &mac);
    void note_takers(const std::vector<const Document *> &documents, const WantedConfig &wanted,
                     const PlannedDevice &device);
    void check_takers() const;
    void find_topology();
    void set_batches();

    ApplySettings settings_; // with the devices of the files chosen, if nothing else chooses
    const Sources &sources_;
    bool answered_ = false; // the controller has, once
    ApplyPlan plan_;
    std::vector<Mac> switches_; // of the whole list
    Topology topology_;
    std::map<std::string, size_t> takers_;        // devices that can have it
    std::map<std::string, std::string> refusers_; // one that cannot, and why
    std::map<std::string, std::set<Mac>> overridden_;
};

PlannedDevice device_of(const WtpRecord &wtp)
{
    PlannedDevice device;
    device.mac = wtp.mac;
    device.name = wtp.name;
    device.model = wtp.model;
    device.kind = wtp.wtp_type;
    if (wtp.managed == 0)
        device.busy_with = "not under management";
    else if (is_in_upgrade(wtp))
        device.busy_with = "upgrading";
    else if (wtp.state != WTP_ONLINE)
        device.busy_with = "offline";
    return device;
}

std::string other_kind_text(const Sources &sources, const Mac &mac, uint8_t kind)
{
    const auto own = sources.own.find(mac);
    if (own == sources.own.end())
        return "";
    if (kind != DEVICE_ACCESS_POINT && kind != DEVICE_SWITCH)
        return "is neither an access point nor a switch";
    if (own->second.size() > 1 || own->second.front().kind == kind)
        return "";
    return own->second.front().name + " is for another kind of device";
}

void Planner::read_list()
{
    SelectionCheck check(settings_);
    std::set<Mac> listed;
    ask([&] {
        plan_.devices.clear();
        switches_.clear();
        listed.clear();
        check = SelectionCheck(settings_);
        list_devices(settings_, {}, [&](const WtpRecord &wtp) {
            check.saw(wtp);
            listed.insert(wtp.mac);
            if (wtp.wtp_type == DEVICE_SWITCH)
                switches_.push_back(wtp.mac);
            if (settings_.includes(wtp))
                plan_.devices.push_back(device_of(wtp));
        });
    });
    check_choice(check);
    for (const Mac &mac : check.missing_macs()) {
        PlannedDevice &device = plan_.devices.emplace_back();
        device.mac = mac;
        device.problem = "not in the list";
    }
    if (settings_.undo == nullptr)
        note_gone(listed);
    order_as_chosen(plan_.devices, settings_);
    for (PlannedDevice &device : plan_.devices)
        if (device.problem.empty())
            device.problem = other_kind_text(sources_, device.mac, device.kind);
}

// Files of devices that the controller does not know, chosen or not.
void Planner::note_gone(const std::set<Mac> &listed)
{
    for (const auto &[mac, documents] : sources_.own)
        if (listed.count(mac) == 0)
            plan_.notes.push_back(documents.front().name + " can be deleted: " + mac_name(mac) +
                                  " is not in the list");
}

// Devices for which nothing is given are passed over, unless they were named one by one.
void Planner::drop_unmentioned()
{
    for (PlannedDevice &device : plan_.devices)
        if (is_unmentioned(device) && settings_.macs.count(device.mac) != 0)
            device.problem = "nothing is given for it";
    std::erase_if(plan_.devices,
                  [&](const PlannedDevice &device) { return is_unmentioned(device); });
    if (plan_.devices.empty())
        throw Failure("nothing is given for any of the chosen devices");
}

bool Planner::is_unmentioned(const PlannedDevice &device) const
{
    return device.problem.empty() &&
           sources_.of(device.mac, static_cast<DeviceKind>(device.kind)).empty();
}

// The address settings that a document gives to each device, or its name.
const char *personal_setting(const Document &document)
{
    const ConfigKey *name = config_key_find(config_keys(document.kind), "wtp_cfg.name");
    ItemReader items(document.items);
    while (const auto item = items.next()) {
        if (item->id == name->id && item->index.empty())
            return "a name";
        if (item->id == CONFIG_ITEM_ADDRESS_SETTINGS && item->index.empty() &&
            item->value.find_first_not_of('\0') != std::string_view::npos)
            return "an address";
    }
    return nullptr;
}

// The chosen devices of a kind that can be compared.
size_t Planner::count_kind(uint8_t kind) const
{
    return static_cast<size_t>(
        std::count_if(plan_.devices.begin(), plan_.devices.end(), [=](const auto &device) {
            return device.problem.empty() && device.kind == kind;
        }));
}

// None of the documents for a device has what could not be compared.
void Planner::check_refusals() const
{
    for (const PlannedDevice &device : plan_.devices)
        if (device.problem.empty())
            for (const Document *document :
                 sources_.of(device.mac, static_cast<DeviceKind>(device.kind)))
                if (!document->refusal.empty())
                    throw UsageError(document->name + ": " + document->refusal);
}

// Each layer and each --set reaches a device, and no more than one with what can be one's only.
void Planner::check_reach()
{
    std::map<std::string, size_t> reached;
    std::vector<const Document *> documents;
    for (const auto *some : {&sources_.layers, &sources_.sets})
        for (const Document &document : *some) {
            documents.push_back(&document);
            reached[document.name] += count_kind(document.kind);
        }
    for (const Document *document : documents) {
        if (count_kind(document->kind) == 0)
            continue;
        const char *personal = personal_setting(*document);
        if (personal != nullptr && reached[document->name] > 1)
            throw UsageError(document->name + " would give " + personal + " to " +
                             number_of(reached[document->name], "device"));
    }
    const bool is_any_there = count_kind(DEVICE_ACCESS_POINT) + count_kind(DEVICE_SWITCH) > 0;
    for (const auto &[name, count] : reached)
        if (count == 0 && is_any_there)
            throw Failure(name + " is for none of the chosen devices");
}

void Planner::note_overridden(const std::vector<const Document *> &documents,
                              const WantedConfig &wanted, const Mac &mac)
{
    for (const auto &[pair, count] : wanted.merged.overridden) {
        const Document &by = *documents[pair.by - 1];
        overridden_[documents[pair.what - 1]->name + ": settings are overridden by " +
                    (by.role == Document::own ? "files of devices" : by.name)]
            .insert(mac);
    }
}

// Which of the documents for several devices this one can have.
void Planner::note_takers(const std::vector<const Document *> &documents,
                          const WantedConfig &wanted, const PlannedDevice &device)
{
    std::vector<const std::string *> refused(documents.size());
    for (const MergeProblem &problem : wanted.merged.problems)
        refused[problem.source - 1] = &problem.text;
    for (size_t i = 0; i < documents.size(); i++)
        if (documents[i]->is_for_several() && refused[i] == nullptr)
            takers_[documents[i]->name]++;
        else if (documents[i]->is_for_several())
            refusers_.emplace(documents[i]->name, mac_name(device.mac) + " " +
                                                      name_text(device.name) + " " + *refused[i]);
}

void Planner::compare_one(const WtpRecord &wtp, PlannedDevice &device)
{
    const auto kind = static_cast<DeviceKind>(device.kind);
    if (wtp.wtp_cfg == nullptr) {
        device.problem = "has no configuration";
        return;
    }
    const std::vector<const Document *> documents = sources_.of(device.mac, kind);
    const ConfigRow stored = read_config(*wtp.wtp_cfg, kind);
    WantedConfig wanted = want(stored, documents, kind);
    device.problem = wanted.problem;
    note_takers(documents, wanted, device);
    note_overridden(documents, wanted, device.mac);
    device.before = items_of_members(stored, wanted.differences, kind, false);
    device.differences = std::move(wanted.differences);
}

void Planner::compare_all()
{
    std::map<Mac, PlannedDevice *> by_mac;
    std::vector<Mac> macs;
    for (PlannedDevice &device : plan_.devices)
        if (device.problem.empty()) {
            by_mac[device.mac] = &device;
            macs.push_back(device.mac);
        }
    std::set<Mac> seen;
    ask([&] {
        seen.clear();
        takers_.clear();
        refusers_.clear();
        overridden_.clear();
        list_configurations(settings_, macs, [&](const WtpRecord &wtp) {
            const auto found = by_mac.find(wtp.mac);
            if (found != by_mac.end() && wtp.wtp_type == found->second->kind &&
                seen.insert(wtp.mac).second)
                compare_one(wtp, *found->second);
        });
    });
    for (const auto &[mac, device] : by_mac)
        if (seen.count(mac) == 0)
            device->problem = "not in the list";
}

// A layer or a --set that no device can have is a mistake.
void Planner::check_takers() const
{
    for (const auto &[name, refusal] : refusers_)
        if (takers_.count(name) == 0)
            throw Failure(std::string("no device can have ").append(name) + ": " + refusal);
}

void Planner::find_topology()
{
    if (switches_.empty())
        return;
    ask([&] { topology_ = list_topology(settings_, switches_); });
    for (const TopologyLink &link : topology_.links()) {
        const auto add = [&](const Mac &end, const std::string &port, const Mac &other) {
            uint32_t number = 0;
            const auto node = topology_.nodes().find(other);
            if (take_number(port.c_str(), number) && node != topology_.nodes().end())
                plan_.connected.emplace(std::pair(end, number), node->second.name.empty()
                                                                    ? mac_name(other)
                                                                    : node->second.name);
        };
        add(link.from, link.from_port, link.to);
        add(link.to, link.to_port, link.from);
    }
}

void Planner::set_batches()
{
    std::vector<BatchDevice> changing;
    std::vector<PlannedDevice *> devices;
    for (PlannedDevice &device : plan_.devices)
        if (device.differs() && device.busy_with.empty()) {
            changing.push_back({device.mac, device.name, device.kind});
            devices.push_back(&device);
        }
    if (changing.size() > 1 || std::any_of(devices.begin(), devices.end(), [](const auto *one) {
            return one->kind == DEVICE_SWITCH;
        }))
        find_topology();
    BatchPlan plan = {settings_.batch, plan_.devices.size(), settings_.keep_order, {}};
    if (!settings_.keep_order)
        plan.links = links_of(topology_, switches_);
    const auto batches = make_batches(changing, plan);
    plan_.batches = batches.size();
    for (size_t i = 0; i < batches.size(); i++)
        for (const size_t member : batches[i])
            devices[member]->batch = i + 1;
}

ApplyPlan Planner::make()
{
    read_list();
    check_refusals();
    check_reach();
    drop_unmentioned();
    compare_all();
    check_takers();
    set_batches();
    plan_.notes.insert(plan_.notes.begin(), sources_.notes.begin(), sources_.notes.end());
    for (const auto &[text, macs] : overridden_)
        plan_.notes.push_back(text + " (devices: " + std::to_string(macs.size()) + ", first " +
                              mac_name(*macs.begin()) + ")");
    return std::move(plan_);
}

} // namespace

ApplyPlan make_plan(const ApplySettings &settings, const Sources &sources)
{
    return Planner(settings, sources).make();
}
