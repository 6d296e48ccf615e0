// SPDX-License-Identifier: MIT
// zov-rollout: upgrades the firmware of devices in batches.
#include "rollout/plan.h"
#include "rollout/reporter.h"
#include "rollout/requests.h"
#include "rollout/stop.h"
#include "rollout/tables.h"

#include <algorithm>
#include <chrono>

// Seconds on a clock that nobody sets.
static double seconds_now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

static RolloutSettings read_settings(int argc, char **argv, bool &goes_on)
{
    RolloutSettings settings;
    std::vector<const char *> operands;
    goes_on = read_command_line(argc, argv, ROLLOUT_PROGRAM, ROLLOUT_OPTIONS, settings, operands);
    if (!goes_on)
        return settings;
    if (!operands.empty())
        throw UsageError(std::string("unexpected argument '") + operands[0] + "'");
    if ((settings.mac != nullptr) + (settings.name != nullptr) + settings.all_managed != 1)
        throw UsageError("exactly one of --mac, --name and --all-managed is needed");
    return settings;
}

// Looks at the devices of the batch, and asks those to upgrade that wait for it. What keeps the
// controller from answering may pass; the deadlines end it if it does not.
static void look_and_ask(const RolloutSettings &settings, Roll &roll, Reporter &reporter)
{
    std::vector<Mac> asked;
    try {
        list_devices(settings, roll.running(), [&](const WtpRecord &wtp) {
            roll.observe(wtp.mac, observation_of(wtp), seconds_now());
        });
        asked = roll.pending();
        asked.resize(std::min(asked.size(), REQUEST_MAX)); // the rest next time
        if (!asked.empty()) {
            const std::vector<uint8_t> codes =
                start_upgrades(settings, asked, settings.period, settings.type);
            for (size_t i = 0; i < asked.size(); i++)
                roll.answered(asked[i], codes[i], seconds_now());
        }
        reporter.trouble_is_over();
    } catch (const Unanswered &failure) {
        roll.unanswered(asked);
        reporter.trouble(failure.what());
    } catch (const Failure &failure) {
        reporter.trouble(failure.what());
    }
    roll.pass_time(seconds_now());
}

static void run_batch(const RolloutSettings &settings, Roll &roll, Reporter &reporter,
                      ProgressBar &bar)
{
    reporter.note("batch " + std::to_string(roll.batch()) + " of " +
                  std::to_string(roll.batches()) + ": " + std::to_string(roll.running().size()) +
                  " devices");
    bool told = false;
    for (;;) {
        look_and_ask(settings, roll, reporter);
        if (stop_wanted()) {
            if (!told)
                reporter.warn("stopping after this batch; a second signal ends at once");
            told = true;
            roll.drop_unasked();
        }
        bar.show(roll);
        if (roll.running().empty())
            return;
        wait_or_stop(settings.interval);
    }
}

// Whether every device has the newest firmware as far as anybody can see.
static bool all_is_well(const Roll &roll)
{
    for (const RollDevice &device : roll.devices())
        if (device.stage != UpgradeStage::done && !device.current)
            return false;
    return true;
}

static std::string counts_text(const Roll &roll)
{
    using enum UpgradeStage;
    const auto count = [&](UpgradeStage stage) { return std::to_string(roll.count(stage)); };
    return count(done) + " done, " + count(failed) + " failed, " + count(timed_out) +
           " timed out, " + count(skipped) + " skipped, " + count(waiting) + " not started";
}

static int roll_out(const RolloutSettings &settings, Roll &roll, Reporter &reporter,
                    ProgressBar &bar)
{
    while (!stop_wanted() && !reporter.log_failed() && roll.begin_batch(seconds_now()))
        run_batch(settings, roll, reporter, bar);
    bar.clear();
    if (roll.count(UpgradeStage::waiting) > 0)
        reporter.warn(std::string(stop_wanted()            ? "stopped by a signal"
                                  : roll.too_many_failed() ? "stopped: too many failures"
                                                           : "stopped") +
                      "; started again, it goes on with the rest");
    reporter.warn(counts_text(roll));
    print_summary(roll);
    return all_is_well(roll) && !reporter.log_failed() ? 0 : 1;
}

static int run(int argc, char **argv)
{
    bool goes_on = false;
    const RolloutSettings settings = read_settings(argc, argv, goes_on);
    if (!goes_on)
        return 0;
    const EventLog log(settings.dry_run ? nullptr : settings.log);
    watch_for_stop();
    ProgressBar bar;
    Reporter reporter(log, bar);
    const RollLimits limits = {settings.batch, settings.max_failures,
                               static_cast<double>(settings.deadline)};
    Roll roll(make_plan(settings), limits, reporter);
    if (settings.dry_run) {
        print_plan(roll);
        return 0;
    }
    const size_t skipped = roll.count(UpgradeStage::skipped);
    log.add("roll-out of " + std::to_string(roll.devices().size() - skipped) + " devices, " +
            std::to_string(skipped) + " skipped");
    return roll_out(settings, roll, reporter, bar);
}

int main(int argc, char **argv)
{
    return run_program(ROLLOUT_PROGRAM, argc, argv, run);
}
