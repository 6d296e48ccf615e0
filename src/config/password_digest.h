// SPDX-License-Identifier: MIT
// The digest under which an access point's password travels.
#pragma once

#include "util/messages.h"

#include <cstdint>

// The MD5 digest (RFC 1321) of the password's bytes and one line feed, computed by md5sum(1) from a
// temporary file of this process; the password is in no command line and in no shell text. Returns
// 0, or 1 with the message reported. No file remains.
int password_digest(const char *password, uint8_t digest[16], const Messages &messages);
