// SPDX-License-Identifier: MIT
// File descriptors that the program was started with.
#pragma once

// Puts /dev/null in the place of whichever of standard input, output and error (POSIX descriptors
// 0 to 2) is closed, so that nothing that is opened later takes its number and gets what was meant
// for it. Returns 0, or 1 when that is impossible, with the message printed.
int occupy_standard_descriptors();
