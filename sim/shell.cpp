// SPDX-License-Identifier: MIT
#include "sim/shell.h"

#include <algorithm>
#include <ctime>

std::string canned_output(const Device &device, const std::string &command, uint8_t type)
{
    enum : uint8_t { ALL = 0, STANDARD_OUTPUT = 1, STANDARD_ERROR = 2 };
    const WtpRecord &wtp = device.record;
    std::string out;
    if (command == "uptime")
        out =
            "up " +
            std::to_string(static_cast<time_t>(std::max(0.0, exact_time() - device.started)) / 60) +
            " min, load average: 0.08, 0.03, 0.01\n";
    else if (command == "uname -a")
        out = std::string("Linux ").append(wtp.name) + " 5.10.0 armv7l GNU/Linux\n";
    else if (command == "free")
        out = "              total        used        free\nMem:         " +
              std::to_string(wtp.mem.total) + "      " + std::to_string(wtp.mem.used) + "      " +
              std::to_string(wtp.mem.total - wtp.mem.used) + "\n";
    else if (command == "cat /etc/version")
        out = std::string(wtp.sw_ver) + "\n";
    else
        return type == STANDARD_OUTPUT ? "" : "sh: " + command + ": not found\n";
    return type == STANDARD_ERROR ? "" : out;
}
