#include "devkit/broker/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>

std::size_t terminal_width()
{
    winsize size = {};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool colours_wanted()
{
    const char* refused = getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) != 0 && (refused == nullptr || *refused == '\0');
}
