// SPDX-License-Identifier: MIT
#include "apply/result.h"

#include "apply/course.h"
#include "apply/plan_text.h"
#include "common/address_text.h"
#include "common/plain_text.h"
#include "common/table.h"
#include "course/program.h"

#include <cmath>

using Json = nlohmann::ordered_json;

bool may_have_changed(const ApplyDevice &device)
{
    return device.begun >= 0;
}

// What became of a device of the plan, and the reason.
static std::pair<std::string, std::string> outcome(const PlannedDevice &device, const Apply &apply)
{
    if (!device.problem.empty())
        return {"failed", device.problem};
    if (!device.differs())
        return {"as wanted", ""};
    if (device.batch == 0)
        return {"skipped", device.busy_with};
    const ApplyDevice &applied = *apply.find(device.mac);
    return {stage_text(applied), applied.reason};
}

static std::string seconds_of(const ApplyDevice *device)
{
    return device != nullptr && device->begun >= 0 && device->ended >= 0
               ? std::to_string(std::lround(device->ended - device->begun))
               : "-";
}

// Devices that have what is wanted are counted only.
std::vector<std::string> result_lines(const ApplyResult &result, size_t columns)
{
    std::vector<TableRow> rows = {{"MAC", "NAME", "CHANGES", "SECONDS", "RESULT"}};
    for (const PlannedDevice &device : result.plan.devices) {
        const auto [stage, reason] = outcome(device, result.apply);
        if (device.problem.empty() && !device.differs())
            continue;
        rows.push_back({mac_name(device.mac), name_text(device.name),
                        std::to_string(device.differences.size()),
                        seconds_of(result.apply.find(device.mac)),
                        stage + (reason.empty() ? "" : ": " + plain_text(reason))});
    }
    return rows.size() == 1 ? std::vector<std::string>() : table_lines(rows, 3, columns);
}

std::string counts_text(const ApplyResult &result)
{
    std::vector<std::string> texts;
    for (const PlannedDevice &device : result.plan.devices)
        texts.push_back(outcome(device, result.apply).first);
    return counts_text(texts);
}

static Json result_json(const ApplyResult &result, const ApplySettings &settings)
{
    Json devices = Json::array();
    for (const PlannedDevice &device : result.plan.devices) {
        const auto [stage, reason] = outcome(device, result.apply);
        const ApplyDevice *applied = result.apply.find(device.mac);
        const bool is_timed = applied != nullptr && applied->begun >= 0 && applied->ended >= 0;
        Json made = device_json(device, result.plan);
        made["seconds"] = is_timed ? Json(std::lround(applied->ended - applied->begun)) : Json();
        made["result"] = stage;
        made["reason"] = reason.empty() ? Json() : Json(reason);
        devices.push_back(std::move(made));
    }
    return {{"document", "result"},
            {"controller", settings.address + (":" + std::to_string(settings.port))},
            {"status", result.status},
            {"batches", result.plan.batches},
            {"notes", result.plan.notes},
            {"undo", result.undo.empty() ? Json() : Json(result.undo)},
            {"devices", std::move(devices)}};
}

void print_result(const ApplyResult &result, const ApplySettings &settings)
{
    if (settings.json)
        print_document(result_json(result, settings));
    else
        print_lines(result_lines(result, output_columns()));
}
