// SPDX-License-Identifier: MIT
// zov-rollout: upgrades the firmware of devices in batches.
#include "common/plain_text.h"
#include "common/stop.h"
#include "course/lock.h"
#include "course/program.h"
#include "rollout/course.h"
#include "rollout/plan.h"
#include "rollout/result.h"

#include <cstdio>
#include <optional>

enum : size_t { COLUMNS_OF_LOG = 1000, COLUMNS_OF_QUESTION = 80 };

static RolloutSettings read_settings(int argc, char **argv, bool &goes_on)
{
    RolloutSettings settings;
    std::vector<const char *> operands;
    goes_on = read_command_line(argc, argv, ROLLOUT_PROGRAM, ROLLOUT_OPTIONS, settings, operands);
    if (!goes_on)
        return settings;
    if (!operands.empty())
        throw UsageError(std::string("unexpected argument '") + operands[0] + "'");
    if (!settings.chooses())
        throw UsageError("at least one of --mac, --name and --all-managed is needed");
    check_can_ask(settings);
    return settings;
}

static RollLimits limits_of(const RolloutSettings &settings, size_t devices)
{
    RollLimits limits;
    limits.follow = std::max<size_t>(settings.batch[0].of(devices), 1);
    limits.max_failures = settings.max_failures.of(devices);
    limits.deadline = settings.deadline;
    limits.begin = settings.begin;
    limits.settle = settings.settle;
    limits.outage = settings.outage;
    limits.to = settings.to == nullptr ? "" : settings.to;
    limits.allow_older = settings.allow_older;
    return limits;
}

// Shows the plan and asks.
static bool is_confirmed(const Roll &roll, const RolloutSettings &settings)
{
    if (settings.yes)
        return true;
    for (const std::string &line : plan_lines(roll, COLUMNS_OF_QUESTION))
        fprintf(stderr, "%s\n", line.c_str());
    const size_t followed = roll.count(UpgradeStage::upgrading);
    return may_begin(settings, "Upgrade " + number_of(roll.count(UpgradeStage::waiting), "device") +
                                   (followed > 0 ? " and follow " + std::to_string(followed) : "") +
                                   " in " + std::to_string(roll.batches()) +
                                   (roll.batches() == 1 ? " batch?" : " batches?"));
}

static int status_of(const Roll &roll, int signal)
{
    if (signal != 0)
        return SIGNALLED + signal;
    if (roll.count(UpgradeStage::waiting) > 0 && roll.halted() != Halt::log)
        return STOPPED;
    for (const RollDevice &device : roll.devices())
        if (device.stage != UpgradeStage::done && !device.current)
            return SOME_FAILED;
    return ALL_DONE;
}

// Says how it ended, on standard error, in the log and on standard output.
static int finish(const Roll &roll, const RolloutSettings &settings, int signal, Reporter &reporter)
{
    const bool goes_on = roll.halted() == Halt::signal || roll.halted() == Halt::failures ||
                         roll.halted() == Halt::silence;
    const bool is_left = roll.count(UpgradeStage::waiting) > 0;
    if (is_left)
        reporter.warn(halt_text(roll.halted(), roll.halt_reason()) +
                      (goes_on ? "; started again, it goes on with the rest" : ""));
    else if (roll.halted() == Halt::differs)
        reporter.warn(plain_text(roll.halt_reason()));
    reporter.warn(counts_text(roll));
    for (const std::string &line : result_lines(roll, COLUMNS_OF_LOG))
        reporter.write_log(line);
    int status = status_of(roll, signal);
    if (status == ALL_DONE && reporter.log_failed())
        status = SOME_FAILED;
    print_result(roll, settings, status);
    return status;
}

static int roll_out(const RolloutSettings &settings, Reporter &reporter)
{
    std::optional<ControllerLock> lock;
    if (!settings.plan)
        lock.emplace(settings);
    std::vector<RollDevice> devices = make_plan(settings);
    const RollLimits limits = limits_of(settings, devices.size());
    RolloutCourse course(settings, std::move(devices), limits, reporter);
    const Roll &roll = course.roll();
    if (settings.plan) {
        print_plan(roll, settings);
        return ALL_DONE;
    }
    for (const RollDevice &device : roll.devices())
        if (device.finished())
            reporter.write_log(event_text(device));
    if (roll.batches() > 0 && !is_confirmed(roll, settings)) {
        reporter.warn("nothing was begun");
        return STOPPED;
    }
    const int signal = drive(course, settings.interval, reporter);
    return finish(roll, settings, signal, reporter);
}

static int run(int argc, char **argv)
{
    bool goes_on = false;
    const std::vector<std::string> words(argv, argv + argc);
    const RolloutSettings settings = read_settings(argc, argv, goes_on);
    if (!goes_on)
        return ALL_DONE;
    return run_with_log(ROLLOUT_PROGRAM, words, settings.plan ? nullptr : settings.log,
                        [&](Reporter &reporter) { return roll_out(settings, reporter); });
}

int main(int argc, char **argv)
{
    return run_program(ROLLOUT_PROGRAM, argc, argv, run);
}
