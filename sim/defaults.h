// SPDX-License-Identifier: MIT
// What simulated devices are made of, and the configuration that they are delivered with.
#pragma once

#include "sim/fleet.h"

#include <cstdio>

inline constexpr uint32_t LAN_PORTS = 2;     // of an access point
inline constexpr uint32_t SWITCH_PORTS = 10; // of a switch

struct Model {
    const char *name;
    const char *sku;
    uint32_t radios;
};

inline constexpr Model AP_MODELS[] = {
    {"AP-220", "AP-220-EU", 2}, {"AP-430", "AP-430-EU", 2}, {"AP-650", "AP-650-WW", 3}};

// How many radios the device has, as its kind and model say.
uint32_t radios_of(const WtpRecord &wtp);

Mac make_mac(uint8_t kind, uint32_t number);

template <class... Parts>
void set_text(Arena &memory, std::string_view &text, const char *format, Parts... parts)
{
    char buffer[128];
    snprintf(buffer, sizeof buffer, format, parts...);
    text = memory.copy(buffer);
}

// Puts the configuration back to what the device was delivered with.
void reset_configuration(Device &device);

// Lets a port of a switch give so many watts, which may be none.
void give_power(WtpRecord &wtp, PoePortInfo &poe, uint32_t watts);
