#include "devkit/device/agent/terminal.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

PseudoTerminal open_terminal(const Fd& like)
{
    Fd leading(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    std::array<char, 64> name{};
    if (leading.get() < 0 || grantpt(leading.get()) != 0 || unlockpt(leading.get()) != 0 ||
        ptsname_r(leading.get(), name.data(), name.size()) != 0) {
        throw_errno("a terminal on the device");
    }
    Fd following = open_file(name.data(), O_RDWR | O_NOCTTY);
    termios settings{};
    if (tcgetattr(like.get(), &settings) == 0) {
        tcsetattr(following.get(), TCSANOW, &settings);
    }
    take_size(following, like.get());
    return {std::move(leading), std::move(following)};
}

void take_size(const Fd& terminal, int like)
{
    winsize size{};
    if (ioctl(like, TIOCGWINSZ, &size) == 0) {
        ioctl(terminal.get(), TIOCSWINSZ, &size);
    }
}

RawTerminal::RawTerminal()
{
    if (tcgetattr(STDIN_FILENO, &before_) != 0) {
        throw_errno("the terminal");
    }
    termios raw = before_;
    cfmakeraw(&raw);
    tcsetattr(STDIN_FILENO, TCSADRAIN, &raw);
}

RawTerminal::~RawTerminal()
{
    tcsetattr(STDIN_FILENO, TCSADRAIN, &before_);
}
