// SPDX-License-Identifier: MIT
#include "course/confirm.h"

#include "common/stop.h"
#include "common/trusted_files.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

static Descriptor open_terminal()
{
    return Descriptor(open("/dev/tty", O_RDWR | O_CLOEXEC));
}

bool can_ask()
{
    return isatty(STDERR_FILENO) != 0 && open_terminal();
}

bool confirm(const std::string &question)
{
    const Descriptor terminal = open_terminal();
    tcflush(terminal.get(), TCIFLUSH); // what was typed before the question is no answer to it
    if (!terminal || write_all(terminal.get(), question + " [y/N] ") != 0)
        return false;
    int ready = 0;
    while (ready == 0) {
        check_stop(); // a signal may have come before the question
        ready = wait_for(terminal.get(), POLLIN, FOREVER);
    }
    check_stop();
    char answer[256] = "";
    return ready > 0 && read(terminal.get(), answer, sizeof answer) > 0 &&
           (answer[0] == 'y' || answer[0] == 'Y');
}
