// SPDX-License-Identifier: MIT
#include "common/failure.h"

#include <cstring>

std::string with_reason(const std::string &text, int error)
{
    return text + ": " + strerror(error);
}
