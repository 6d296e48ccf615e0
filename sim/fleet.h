// SPDX-License-Identifier: MIT
// The devices of the simulated controller.
#pragma once

#include "device/wtp_record.h"
#include "sim/arena.h"

#include <chrono>
#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

// The newest firmware; devices with an older one can be upgraded, those of LEGACY_MAJOR in two
// steps.
inline constexpr const char *FIRMWARE_LATEST = "2.1.0";
inline constexpr const char *FIRMWARE_BETWEEN = "2.0.1";
inline constexpr const char *FIRMWARE_LEGACY = "1.4.2";

enum UpgradeState : uint8_t {
    UPGRADE_NONE = 0,
    UPGRADE_WAITING = 1,
    UPGRADE_LOADING = 2,
    UPGRADE_WRITING = 3,
    UPGRADE_DONE = 4,
    UPGRADE_FAILED = 5,
};

// How the upgrades of a device go on: by a step whenever it is listed, to the new version or to a
// failure or to a step that never ends; or by the clock.
struct UpgradeCourse {
    enum Kind : uint8_t { succeeds, fails, hangs, timed } kind = succeeds;
    double seconds = 0; // of timed
};

struct Device {
    Arena memory;                      // of what the record holds
    std::unique_ptr<Arena> cfg_memory; // of its configuration
    WtpRecord record;
    double started = 0; // what its uptime counts from, in seconds since 1970
    UpgradeCourse course;
    std::chrono::steady_clock::time_point upgrade_started;
    bool away = false; // offline because of a configuration
};

using Fleet = std::vector<std::unique_ptr<Device>>;

inline constexpr uint32_t DEVICES_MAX = 100000;              // of a kind, at first
inline constexpr size_t FLEET_MAX = 4 * size_t{DEVICES_MAX}; // with those that clients add

struct FleetSize {
    uint32_t aps = 0, switches = 0, others = 0;
    uint32_t seed = 0;
};

// A fleet that looks like one: models, radios, WLANs and stations, ports and neighbours, stored
// configurations. The same size and seed give the same fleet.
Fleet make_fleet(const FleetSize &size, time_t now);

// The time, with its fraction of a second: an uptime counts whole seconds from the exact start.
double exact_time();

// Seconds of a clock that nobody sets.
double steady_time();

// The device joins or leaves, if it has not yet.
void set_state(WtpRecord &wtp, WtpState state, time_t now);

// A device that has not joined yet, with its kind's default configuration.
std::unique_ptr<Device> make_absent_device(const Mac &mac);
