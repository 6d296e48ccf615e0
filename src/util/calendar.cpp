// SPDX-License-Identifier: MIT
#include "util/calendar.h"

#include <ctime>

const char *calendar_text(int64_t seconds)
{
    static bool zone_is_set;
    if (!zone_is_set)
        tzset(); // once: ctime() would look for a changed time zone file at every call
    zone_is_set = true;

    static char text[26];
    const auto time = static_cast<time_t>(seconds);
    tm parts;
    if (localtime_r(&time, &parts) == nullptr)
        return "\n";
    return asctime_r(&parts, text);
}
