// SPDX-License-Identifier: MIT
// The bands that --radio names.
#pragma once

enum RadioBand : int { BAND_UNSET = -1, BAND_2G = 0, BAND_5G = 1, BAND_5G1 = 2 };

// The band named exactly "2g", "5g" or "5g1", up to `last`; BAND_UNSET for anything else,
// null included.
RadioBand radio_band(const char *name, RadioBand last);
