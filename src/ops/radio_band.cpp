// SPDX-License-Identifier: MIT
#include "ops/radio_band.h"

#include <cstring>

RadioBand radio_band(const char *name, RadioBand last)
{
    static constexpr const char *NAMES[] = {"2g", "5g", "5g1"};
    if (name == nullptr)
        return BAND_UNSET;
    int band = BAND_2G;
    for (const char *known : NAMES) {
        if (band <= last && strcmp(name, known) == 0)
            return static_cast<RadioBand>(band);
        band++;
    }
    return BAND_UNSET;
}
