// SPDX-License-Identifier: MIT
#include "util/descriptors.h"

#include "util/output.h"

#include <fcntl.h>
#include <unistd.h>

int occupy_standard_descriptors()
{
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; fd++) {
        if (fcntl(fd, F_GETFD) >= 0)
            continue;
        if (open("/dev/null", O_RDWR) != fd) // the lowest free number, so this one
            return fail("ERROR: Open /dev/null failed.\n");
    }
    return 0;
}
