// SPDX-License-Identifier: MIT
#include "rollout/course.h"

#include "common/plain_text.h"
#include "common/stop.h"
#include "common/table.h"
#include "proto/result_code.h"
#include "rollout/plan.h"
#include "rollout/requests.h"
#include "rollout/result.h"

#include <algorithm>
#include <cmath>

static std::string stage_event(const RollDevice &device)
{
    using enum UpgradeStage;
    const std::string from = version_text(device.step.start), to = version_text(device.to);
    switch (device.stage) {
    case waiting: // behind a step, whose versions they still are
        return from + " -> " + to + ", goes on";
    case sent:
        return device.step.reply_lost ? "asked to upgrade, without an answer" : "asked to upgrade";
    case upgrading:
        return "upgrading, " + from + " -> " + to;
    case settling:
        return "back with version " + to;
    case done:
        return "done, " + version_text(device.from) + " -> " + to + " in " +
               std::to_string(std::lround(device.ended - device.begun)) + " s";
    case failed:
    case timed_out:
    case unknown:
    case skipped:
        break;
    }
    return std::string(stage_text(device)) + ": " + plain_text(device.reason);
}

std::string event_text(const RollDevice &device)
{
    return std::string(mac_to_text(device.mac)) + " " + name_text(device.name) + ": " +
           stage_event(device);
}

void RolloutCourse::changed(const RollDevice &device)
{
    const bool good = !device.finished() || device.stage == UpgradeStage::done || device.current;
    good ? reporter_.note(event_text(device)) : reporter_.warn(event_text(device));
}

std::string RolloutCourse::batch_text() const
{
    const size_t devices = roll_.watched().size();
    return "batch " + std::to_string(roll_.batch()) + " of " + std::to_string(roll_.batches()) +
           ": " + std::to_string(devices) + (devices == 1 ? " device" : " devices");
}

Progress RolloutCourse::progress() const
{
    return {roll_.batch(),
            roll_.batches(),
            roll_.batch_progress(),
            roll_.whole_progress(),
            roll_.count(UpgradeStage::done),
            roll_.failures()};
}

void RolloutCourse::look()
{
    const double since = seconds_now();
    std::map<Mac, Observation> seen;
    list_devices(settings_, roll_.watched(),
                 [&](const WtpRecord &wtp) { seen[wtp.mac] = observation_of(wtp); });
    roll_.look(seen, since, seconds_now());
}

// Where the answer to that is not to be had, it is asked for again after the next look.
void RolloutCourse::ask_for_steps()
{
    const std::vector<Mac> unclear = roll_.unclear();
    if (unclear.empty())
        return;
    const FirmwareSteps known = ask_firmware_steps(settings_, unclear);
    for (const Mac &mac : unclear) {
        const auto steps = known.steps.find(mac);
        if (steps != known.steps.end())
            roll_.steps_known(mac, steps->second, seconds_now());
        else if (known.codes.at(mac) == RESULT_NO_IMAGE)
            roll_.steps_known(mac, 0, seconds_now());
    }
}

std::vector<Mac> RolloutCourse::choose()
{
    if (stop_wanted())
        roll_.halt(Halt::signal);
    std::vector<Mac> macs = roll_.pending();
    macs.resize(std::min(macs.size(), REQUEST_MAX)); // the rest next time
    roll_.ask(macs);
    return macs;
}

void RolloutCourse::send()
{
    ask_for_steps();
    if (roll_.pending().empty())
        return;
    std::vector<Mac> asked;
    try {
        const std::vector<uint8_t> codes = start_upgrades(
            settings_, [&] { return asked = choose(); }, settings_.period, settings_.type);
        for (size_t i = 0; i < asked.size(); i++)
            roll_.answered(asked[i], codes[i], seconds_now());
    } catch (const Unanswered &) {
        roll_.unanswered(asked, seconds_now());
        throw;
    } catch (const StopAtOnce &) {
        roll_.unanswered(asked, seconds_now());
        throw;
    }
}

void RolloutCourse::abandon()
{
    roll_.abandon(seconds_now(), "ended by a signal");
}
