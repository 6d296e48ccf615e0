// SPDX-License-Identifier: MIT
#include "apply/course.h"

#include "apply/requests.h"
#include "common/device_names.h"
#include "common/plain_text.h"
#include "common/stop.h"
#include "common/table.h"
#include "course/program.h"
#include "proto/result_code.h"

#include <cmath>
#include <set>

static std::vector<ApplyDevice> devices_of(const ApplyPlan &plan)
{
    std::vector<ApplyDevice> devices;
    for (const PlannedDevice &planned : plan.devices) {
        if (planned.batch == 0)
            continue;
        ApplyDevice &device = devices.emplace_back();
        device.mac = planned.mac;
        device.name = planned.name;
        device.batch = planned.batch;
    }
    return devices;
}

ApplyCourse::ApplyCourse(const ApplySettings &settings, const Sources &sources,
                         const ApplyPlan &plan, const ApplyLimits &limits, Reporter &reporter)
    : settings_(settings), sources_(sources), apply_(devices_of(plan), limits, *this),
      reporter_(reporter)
{
    for (const PlannedDevice &device : plan.devices)
        planned_[device.mac] = &device;
}

// --- What is told --------------------------------------------------------------------------------

std::string stage_text(const ApplyDevice &device)
{
    static constexpr const char *TEXTS[] = {"not started", "sent",      "settling", "done",
                                            "failed",      "timed out", "unknown",  "skipped"};
    return TEXTS[static_cast<size_t>(device.stage)];
}

std::string result_text(const ApplyDevice &device)
{
    return stage_text(device) + (device.reason.empty() ? "" : ": " + plain_text(device.reason));
}

std::string event_text(const ApplyDevice &device)
{
    std::string text = std::string(mac_to_text(device.mac)) + " " + name_text(device.name) + ": ";
    switch (device.stage) {
    case ApplyStage::settling:
        return text + "stored";
    case ApplyStage::done:
        return text + "done in " + std::to_string(std::lround(device.ended - device.begun)) + " s";
    case ApplyStage::sent:
        if (device.is_taken && !device.reason.empty())
            return text + "not as wanted any more: " + plain_text(device.reason);
        break;
    case ApplyStage::waiting:
    case ApplyStage::failed:
    case ApplyStage::timed_out:
    case ApplyStage::unknown:
    case ApplyStage::skipped:
        break;
    }
    return text + result_text(device);
}

void ApplyCourse::changed(const ApplyDevice &device)
{
    const bool good = !device.finished() || device.stage == ApplyStage::done;
    good ? reporter_.note(event_text(device)) : reporter_.warn(event_text(device));
}

std::string ApplyCourse::batch_text() const
{
    return "batch " + std::to_string(apply_.batch()) + " of " + std::to_string(apply_.batches()) +
           ": " + number_of(apply_.watched().size(), "device");
}

Progress ApplyCourse::progress() const
{
    return {apply_.batch(),
            apply_.batches(),
            apply_.batch_progress(),
            apply_.whole_progress(),
            apply_.count(ApplyStage::done),
            apply_.failures()};
}

// --- What is seen --------------------------------------------------------------------------------

bool ApplyCourse::begin_batch(double now)
{
    prepared_.clear();
    return apply_.begin_batch(now);
}

// The differences in the members that were sent.
static std::vector<Difference> compare_members(const ConfigRow &before, const ConfigRow &after,
                                               const PlannedDevice &device)
{
    std::vector<Difference> found = compare(before, after, static_cast<DeviceKind>(device.kind));
    std::erase_if(found, [&](const Difference &one) {
        return std::none_of(device.differences.begin(), device.differences.end(),
                            [&](const Difference &wanted) { return wanted.member == one.member; });
    });
    return found;
}

// Compares anew with what is wanted: the differences have to be those that were confirmed, and the
// rest of what is sent as it was saved.
void ApplyCourse::compare_waiting(const PlannedDevice &device, const ConfigRow &stored,
                                  ApplyLook &look)
{
    const auto kind = static_cast<DeviceKind>(device.kind);
    WantedConfig wanted = want(stored, sources_.of(device.mac, kind), kind);
    look.what = wanted.problem;
    const ConfigRow saved = row_of_items(device.before, kind);
    if (!wanted.problem.empty() || wanted.differences != device.differences ||
        !compare_members(saved, stored, device).empty() ||
        !compare_members(stored, saved, device).empty())
        return;
    look.stored = Stored::as_confirmed;
    std::string items = items_of_members(wanted.row, wanted.differences, kind, true);
    items.append(2, '\0'); // the end of the list
    prepared_.insert_or_assign(device.mac,
                               Prepared{stored, std::move(wanted.row), std::move(items)});
}

// What was not asked for, which takes it from what is found to what was there before.
static std::string excess_text(const Difference &back, DeviceKind kind)
{
    if (back.column->table != nullptr)
        return back.path + (back.kind == Difference::added ? " is gone" : " is new");
    return back.path + " was " + value_text_of(*back.column, kind, back.to) + ", is " +
           (back.kind == Difference::added ? "gone" : value_text_of(*back.column, kind, back.from));
}

void ApplyCourse::compare_sent(const PlannedDevice &device, const ConfigRow &stored,
                               ApplyLook &look) const
{
    const Prepared &prepared = prepared_.at(device.mac);
    const auto kind = static_cast<DeviceKind>(device.kind);
    const std::vector<Difference> missing = compare_members(stored, prepared.wanted, device);
    if (missing.empty()) {
        look.stored = Stored::as_wanted;
        return;
    }
    if (compare_members(prepared.before, stored, device).empty() &&
        compare_members(stored, prepared.before, device).empty())
        look.stored = Stored::as_confirmed;
    const auto was_wanted = [&](const Difference &one) {
        return std::any_of(device.differences.begin(), device.differences.end(),
                           [&](const Difference &other) { return other.path == one.path; });
    };
    const auto more = std::find_if_not(missing.begin(), missing.end(), was_wanted);
    look.what = more == missing.end()
                    ? missing.front().path +
                          " is not as wanted: " + difference_text(missing.front(), kind).substr(2)
                    : "changed more than was asked: " + excess_text(*more, kind);
}

ApplyLook ApplyCourse::look_at(const WtpRecord &wtp)
{
    const PlannedDevice &device = *planned_.at(wtp.mac);
    ApplyLook look;
    look.listed = true;
    look.managed = wtp.managed != 0;
    look.online = wtp.state == WTP_ONLINE;
    look.busy = is_in_upgrade(wtp);
    look.change_time = wtp.change_time;
    if (wtp.wtp_cfg == nullptr || wtp.wtp_type != device.kind)
        return look;
    const ConfigRow stored = read_config(*wtp.wtp_cfg, static_cast<DeviceKind>(device.kind));
    look.stored = Stored::other;
    const ApplyDevice &applied = *apply_.find(wtp.mac);
    if (applied.stage == ApplyStage::waiting)
        compare_waiting(device, stored, look);
    if (applied.stage != ApplyStage::waiting ||
        (applied.is_put_off && look.stored != Stored::as_confirmed))
        compare_sent(device, stored, look);
    return look;
}

void ApplyCourse::look()
{
    const std::vector<Mac> watched = apply_.watched();
    const std::set<Mac> wanted(watched.begin(), watched.end());
    std::map<Mac, ApplyLook> seen;
    list_configurations(settings_, watched, [&](const WtpRecord &wtp) {
        if (wanted.count(wtp.mac) != 0 && seen.count(wtp.mac) == 0)
            seen[wtp.mac] = look_at(wtp);
    });
    apply_.look(seen, seconds_now());
}

// --- What is sent --------------------------------------------------------------------------------

std::vector<Mac> ApplyCourse::choose()
{
    if (stop_wanted())
        apply_.halt(Halt::signal);
    if (reporter_.log_failed())
        apply_.halt(Halt::log);
    std::vector<Mac> macs = apply_.pending();
    apply_.ask(macs, seconds_now());
    return macs;
}

void ApplyCourse::send()
{
    const std::vector<Mac> due = apply_.pending();
    if (due.empty())
        return;
    for (const Mac &mac : due)
        for (const Difference &one : planned_.at(mac)->differences)
            reporter_.write_log(
                mac_to_text(mac) + (" " + name_text(planned_.at(mac)->name)) + ": " +
                difference_text(one, static_cast<DeviceKind>(planned_.at(mac)->kind)));
    std::vector<Mac> asked;
    try {
        const auto kind = static_cast<DeviceKind>(planned_.at(due.front())->kind);
        const std::vector<SetAnswer> answers = set_configurations(
            settings_, kind, [&] { return asked = choose(); },
            [&](const Mac &mac) { return std::string_view(prepared_.at(mac).items); });
        for (size_t i = 0; i < asked.size(); i++) {
            const auto &[code, message] = answers[i];
            const char *words = ::result_text(code, asked[i]);
            std::string text = words == nullptr ? "" : words;
            if (text.ends_with('.'))
                text.pop_back();
            if (!message.empty())
                text += (text.empty() ? "" : ": ") + message;
            apply_.answered(asked[i], code, text, seconds_now());
        }
    } catch (const Unanswered &) {
        apply_.unanswered(asked, seconds_now());
        throw;
    } // StopAtOnce: abandon() says of what awaits an answer that it is unknown
}

void ApplyCourse::abandon()
{
    apply_.abandon(seconds_now(), "ended by a signal");
}
