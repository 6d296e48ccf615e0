// SPDX-License-Identifier: MIT
#include "options/options.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

constexpr const option OPTION_TABLE[] = {
#define OPTION(name, word, argument, code) {word, argument, nullptr, code},
    ZOV_OPTIONS(OPTION)
#undef OPTION
        {nullptr, 0, nullptr, 0},
};

// getopt_long answers with these characters for an option that it refuses.
static_assert(std::none_of(std::begin(OPTION_TABLE), std::end(OPTION_TABLE),
                           [](const option &row) { return row.val == ':' || row.val == '?'; }));

const char *option_name(int code)
{
    const option *row = OPTION_TABLE;
    while (row->name != nullptr && row->val != code)
        row++;
    return row->name;
}

bool OptArgList::given(OptionCode code) const
{
    return std::any_of(begin(), end(), [=](const OptArg &opt) { return opt.code == code; });
}

const char *OptArgList::text(OptionCode code) const
{
    const char *last = nullptr;
    for (const OptArg &opt : *this)
        if (opt.code == code)
            last = opt.arg;
    return last;
}

int OptArgList::number(OptionCode code) const
{
    const char *last = text(code);
    return last == nullptr ? 0 : atoi(last);
}
