// SPDX-License-Identifier: MIT
#include "rollout/result.h"

#include "common/address_text.h"
#include "common/device_names.h"
#include "common/plain_text.h"
#include "common/table.h"
#include "course/program.h"

#include <cmath>

using Json = nlohmann::ordered_json;

const char *stage_text(const RollDevice &device)
{
    static constexpr const char *TEXTS[] = {"not started", "asked",   "upgrading",
                                            "settling",    "done",    "failed",
                                            "timed out",   "unknown", "skipped"};
    return device.current ? "up to date" : TEXTS[static_cast<size_t>(device.stage)];
}

static std::string with_reason(const RollDevice &device)
{
    const std::string stage = stage_text(device);
    return device.reason.empty() || device.current ? stage
                                                   : stage + ": " + plain_text(device.reason);
}

static std::string planned(const RollDevice &device)
{
    if (device.finished())
        return with_reason(device);
    if (device.stage == UpgradeStage::upgrading)
        return "follow";
    return device.steps_left == 1 ? "upgrade"
                                  : "upgrade in " + std::to_string(device.steps_left) + " steps";
}

static std::string seconds_of(const RollDevice &device)
{
    return device.begun >= 0 && device.ended >= 0
               ? std::to_string(std::lround(device.ended - device.begun))
               : "-";
}

// The version that a device is to have, as far as that is known.
static const std::string &target_of(const RollDevice &device, const Roll &roll)
{
    return device.to.empty() && !device.finished() ? roll.target() : device.to;
}

std::vector<std::string> plan_lines(const Roll &roll, size_t columns)
{
    std::vector<TableRow> rows = {{"MAC", "NAME", "FROM", "TO", "BATCH", "PLAN"}};
    for (const RollDevice &device : roll.devices())
        rows.push_back({mac_name(device.mac), name_text(device.name), version_text(device.from),
                        version_text(target_of(device, roll)),
                        device.batch == 0 ? "-" : std::to_string(device.batch), planned(device)});
    return table_lines(rows, 4, columns);
}

std::vector<std::string> result_lines(const Roll &roll, size_t columns)
{
    std::vector<TableRow> rows = {{"MAC", "NAME", "FROM", "TO", "SECONDS", "RESULT"}};
    for (const RollDevice &device : roll.devices())
        rows.push_back({mac_name(device.mac), name_text(device.name), version_text(device.from),
                        version_text(device.to), seconds_of(device), with_reason(device)});
    return table_lines(rows, 4, columns);
}

std::string counts_text(const Roll &roll)
{
    std::vector<std::string> texts;
    for (const RollDevice &device : roll.devices())
        texts.emplace_back(stage_text(device));
    return counts_text(texts);
}

static Json json_of(const RollDevice &device, const Roll &roll, bool is_plan)
{
    const std::string &target = target_of(device, roll);
    Json made = {{"mac", mac_name(device.mac)},
                 {"name", device.name},
                 {"kind", kind_name(device.kind)},
                 {"model", device.model},
                 {"from", device.from}};
    made["to"] = target.empty() ? Json() : Json(target);
    made["batch"] = device.batch == 0 ? Json() : Json(device.batch);
    if (is_plan) {
        made["steps"] =
            device.finished() || device.steps_left == 0 ? Json() : Json(device.steps_left);
    } else {
        const bool timed = device.begun >= 0 && device.ended >= 0;
        made["seconds"] = timed ? Json(std::lround(device.ended - device.begun)) : Json();
    }
    made["result"] = is_plan && !device.finished()
                         ? (device.stage == UpgradeStage::upgrading ? "follow" : "upgrade")
                         : stage_text(device);
    made["reason"] = device.reason.empty() ? Json() : Json(device.reason);
    return made;
}

static void print_document(const Roll &roll, const RolloutSettings &settings, const int *status)
{
    Json devices = Json::array();
    for (const RollDevice &device : roll.devices())
        devices.push_back(json_of(device, roll, status == nullptr));
    Json document = {{"document", status == nullptr ? "plan" : "result"},
                     {"controller", settings.address + (":" + std::to_string(settings.port))}};
    if (status != nullptr)
        document["status"] = *status;
    document["batches"] = roll.batches();
    document["devices"] = std::move(devices);
    print_document(document);
}

void print_plan(const Roll &roll, const RolloutSettings &settings)
{
    settings.json ? print_document(roll, settings, nullptr)
                  : print_lines(plan_lines(roll, output_columns()));
}

void print_result(const Roll &roll, const RolloutSettings &settings, int status)
{
    settings.json ? print_document(roll, settings, &status)
                  : print_lines(result_lines(roll, output_columns()));
}
