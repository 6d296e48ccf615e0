// SPDX-License-Identifier: MIT
#include "rollout/reporter.h"

#include "common/failure.h"
#include "common/plain_text.h"
#include "rollout/tables.h"

#include <cmath>

void Reporter::write_log(const std::string &text)
{
    if (log_failed_)
        return;
    try {
        log_.add(text);
    } catch (const Failure &failure) {
        log_failed_ = true;
        bar_.line(std::string(failure.what()) + "; stopping after this batch");
    }
}

void Reporter::note(const std::string &text)
{
    if (!bar_.is_terminal())
        bar_.line(text);
    write_log(text);
}

void Reporter::warn(const std::string &text)
{
    bar_.line(text);
    write_log(text);
}

void Reporter::trouble(const std::string &text)
{
    if (!in_trouble_)
        warn(text + "; trying again");
    in_trouble_ = true;
}

void Reporter::trouble_is_over()
{
    if (in_trouble_)
        warn("the controller answers again");
    in_trouble_ = false;
}

static std::string event_text(const RollDevice &device)
{
    using enum UpgradeStage;
    const std::string from = version_text(device.start), to = version_text(device.to);
    switch (device.stage) {
    case waiting: // behind a step, whose versions they still are
        return from + " -> " + to + ", goes on";
    case sent:
        return "asked to upgrade";
    case upgrading:
        return "upgrading, " + from + " -> " + to;
    case done:
        return "done, " + version_text(device.from) + " -> " + to + " in " +
               std::to_string(std::lround(device.ended - device.begun)) + " s";
    case failed:
    case timed_out:
    case skipped:
        break;
    }
    return std::string(stage_text(device)) + ": " + plain_text(device.reason);
}

void Reporter::changed(const RollDevice &device)
{
    const std::string text =
        std::string(mac_to_text(device.mac)) + " " + name_text(device) + ": " + event_text(device);
    const bool bad =
        device.stage == UpgradeStage::failed || device.stage == UpgradeStage::timed_out;
    bad ? warn(text) : note(text);
}
