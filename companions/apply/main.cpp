// SPDX-License-Identifier: MIT
// zov-apply: makes devices have what configuration files say.
#include "apply/course.h"
#include "apply/plan_text.h"
#include "apply/result.h"
#include "apply/undo.h"
#include "common/address_text.h"
#include "common/plain_text.h"
#include "common/stop.h"
#include "course/lock.h"
#include "course/program.h"

#include <cstdio>
#include <filesystem>
#include <optional>

enum : size_t { COLUMNS_OF_LOG = 1000 };

static ApplySettings read_settings(int argc, char **argv, std::vector<const char *> &operands,
                                   bool &goes_on)
{
    ApplySettings settings;
    goes_on = read_command_line(argc, argv, APPLY_PROGRAM, APPLY_OPTIONS, settings, operands);
    if (!goes_on)
        return settings;
    const bool has_settings = !operands.empty() || !settings.sets.empty();
    if (settings.undo != nullptr && has_settings)
        throw UsageError("--undo takes no files and no --set");
    if (settings.undo == nullptr && !has_settings)
        throw UsageError("there is nothing to apply: give files, --set or --undo");
    if (settings.save != nullptr && settings.no_save)
        throw UsageError("--save and --no-save exclude each other");
    check_can_ask(settings);
    if (!settings.plan)
        undo_path(settings); // which there is, or it throws
    return settings;
}

static ApplyLimits limits_of(const ApplySettings &settings, size_t devices)
{
    ApplyLimits limits;
    limits.max_failures = settings.max_failures.of(devices);
    limits.deadline = settings.deadline;
    limits.begin = settings.begin;
    limits.settle = settings.settle;
    limits.outage = settings.outage;
    return limits;
}

static Sources load_sources(const ApplySettings &settings,
                            const std::vector<const char *> &operands)
{
    Sources sources = read_sources(settings, operands);
    if (!settings.chooses() && !sources.layers.empty())
        throw UsageError(sources.layers.front().name +
                         " is not named by an address: --mac, --name or --all-managed is needed");
    if (!settings.chooses() && sources.own.empty())
        throw UsageError("at least one of --mac, --name and --all-managed is needed");
    return sources;
}

// What is stored for the devices of the plan that are in a batch and that `includes` accepts.
template <class Includes>
static std::vector<SavedDevice> saved_devices(const ApplyPlan &plan, Includes includes)
{
    std::vector<SavedDevice> devices;
    for (const PlannedDevice &device : plan.devices)
        if (device.batch > 0 && includes(device))
            devices.push_back(
                {device.mac, device.name, static_cast<DeviceKind>(device.kind), device.before});
    return devices;
}

// Leaves in the undo file what may have been changed: others may change the rest.
static void narrow_undo(const ApplyPlan &plan, const Apply &apply, const ApplySettings &settings,
                        const std::string &path, Reporter &reporter)
{
    const auto is_changed = [&](const PlannedDevice &device) {
        return may_have_changed(*apply.find(device.mac));
    };
    const std::vector<SavedDevice> devices = saved_devices(plan, is_changed);
    if (devices.size() == apply.devices().size() || devices.empty())
        return;
    try {
        rewrite_undo(path, settings, devices);
    } catch (const Failure &failure) {
        reporter.warn(std::string(failure.what()) + "; it also has devices that were not begun");
    }
}

// Shows the plan and asks.
static bool is_confirmed(const ApplyPlan &plan, const ApplySettings &settings)
{
    if (!settings.yes)
        for (const std::string &line : plan_lines(plan))
            fprintf(stderr, "%s\n", line.c_str());
    else
        for (const std::string &note : plan.notes)
            fprintf(stderr, "zov-apply: note: %s\n", plain_text(note).c_str());
    return may_begin(settings, question_text(plan));
}

static int status_of(const ApplyPlan &plan, const Apply &apply, int signal)
{
    if (signal != 0)
        return SIGNALLED + signal;
    if (apply.count(ApplyStage::waiting) > 0 && apply.halted() != Halt::log)
        return STOPPED;
    for (const PlannedDevice &device : plan.devices)
        if (!device.problem.empty() || (device.differs() && device.batch == 0))
            return SOME_FAILED;
    return apply.count(ApplyStage::done) == apply.devices().size() ? ALL_DONE : SOME_FAILED;
}

// The command that takes it all back.
static std::string undo_command(const ApplySettings &settings, const std::string &path)
{
    const std::string whole = std::filesystem::absolute(path).lexically_normal();
    return std::string(APPLY_PROGRAM.name) + " --undo " + plain_text(shell_word(whole)) +
           " --acserver " + settings.address + " --acport " + std::to_string(settings.port);
}

static int finish(const ApplyPlan &plan, const Apply &apply, const ApplySettings &settings,
                  const std::string &path, int signal, Reporter &reporter)
{
    const bool has_changed =
        std::any_of(apply.devices().begin(), apply.devices().end(), may_have_changed);
    ApplyResult result = {plan, apply, status_of(plan, apply, signal), has_changed ? path : ""};
    if (!result.undo.empty())
        narrow_undo(plan, apply, settings, path, reporter);
    if (apply.count(ApplyStage::waiting) > 0)
        reporter.warn(halt_text(apply.halted(), ""));
    reporter.warn(counts_text(result));
    for (const std::string &line : result_lines(result, COLUMNS_OF_LOG))
        reporter.write_log(line);
    if (result.status == ALL_DONE && reporter.log_failed())
        result.status = SOME_FAILED;
    print_result(result, settings);
    if (!result.undo.empty())
        reporter.warn("to undo it: " + undo_command(settings, path));
    return result.status;
}

static int show_plan(const ApplyPlan &plan, const ApplySettings &settings)
{
    if (settings.json)
        print_document(plan_json(plan, settings));
    else
        print_lines(plan_lines(plan));
    return plan_status(plan);
}

static int apply(const ApplySettings &settings, const Sources &sources, Reporter &reporter)
{
    std::optional<ControllerLock> lock;
    if (!settings.plan)
        lock.emplace(settings);
    const ApplyPlan plan = make_plan(settings, sources);
    if (settings.plan)
        return show_plan(plan, settings);
    for (const std::string &note : plan.notes)
        reporter.write_log("note: " + plain_text(note));
    if (plan.removals() > 0 && !settings.allow_removal && settings.undo == nullptr) {
        for (const std::string &line : plan_lines(plan))
            fprintf(stderr, "%s\n", line.c_str());
        throw UsageError("--allow-removal is needed to remove elements; nothing was sent");
    }
    std::string path;
    if (plan.batches > 0) {
        if (!is_confirmed(plan, settings)) {
            reporter.warn("nothing was begun");
            return STOPPED;
        }
        path = undo_path(settings);
        if (!path.empty())
            write_undo(path, settings, saved_devices(plan, [](const auto &) { return true; }));
        check_stop();
    }
    ApplyCourse course(settings, sources, plan, limits_of(settings, plan.devices.size()), reporter);
    const int signal = drive(course, settings.interval, reporter);
    return finish(plan, course.apply(), settings, path, signal, reporter);
}

static int run(int argc, char **argv)
{
    bool goes_on = false;
    const std::vector<std::string> words(argv, argv + argc);
    std::vector<const char *> operands;
    const ApplySettings settings = read_settings(argc, argv, operands, goes_on);
    if (!goes_on)
        return ALL_DONE;
    const Sources sources = load_sources(settings, operands);
    return run_with_log(APPLY_PROGRAM, words, settings.plan ? nullptr : settings.log,
                        [&](Reporter &reporter) { return apply(settings, sources, reporter); });
}

int main(int argc, char **argv)
{
    return run_program(APPLY_PROGRAM, argc, argv, run);
}
