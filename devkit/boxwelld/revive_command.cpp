#include "devkit/boxwelld/command_line.h"
#include "devkit/on_device.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace {

/** The pipe in which the daemon's parent on a device reads (devkit/device/lib/keep_daemon.sh). */
constexpr char PIPE[] = "/run/.boxwelld.revive";
constexpr std::string_view REQUEST = "revive\n";
constexpr int LONGEST_WAIT_MS = 20000;
constexpr int STEP_MS = 10;

bool daemon_listens()
{
    sockaddr_un address;
    const Fd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    return frame_address(BOXWELLD_DEFAULT_SOCKET, &address) == 0 &&
           (connect(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ||
            errno == EAGAIN);
}

void expect_none()
{
    if (daemon_listens()) {
        throw Refusal("a daemon is running already");
    }
}

/** The pipe, for one caller at a time: the next sees what the first has done. */
Fd open_pipe()
{
    Fd pipe(open(PIPE, O_WRONLY | O_NONBLOCK | O_CLOEXEC));
    if (pipe.get() < 0 && (errno == ENXIO || errno == ENOENT)) {
        throw Refusal(
            "nobody is left to start the daemon: it failed, and /run/.boxwelld.log tells how"
        );
    }
    if (pipe.get() < 0 || flock(pipe.get(), LOCK_EX) != 0) {
        throw_errno(PIPE);
    }
    return pipe;
}

void revive()
{
    if (!on_device()) {
        throw BadUse(
            "this is no device: devkit/device/device starts one, whose daemon can be revived"
        );
    }
    expect_none();
    const Fd pipe = open_pipe();
    expect_none();
    if (write(pipe.get(), REQUEST.data(), REQUEST.size()) < 0) {
        throw_errno(PIPE);
    }
    for (int waited = 0; !daemon_listens(); waited += STEP_MS) {
        if (waited >= LONGEST_WAIT_MS) {
            throw Refusal(
                "the daemon did not come back within 20 s; /run/.boxwelld.log may tell why"
            );
        }
        poll(nullptr, 0, STEP_MS);
    }
}

} // namespace

void add_revive_command(CLI::App& app)
{
    app.add_subcommand("revive", "start a device's daemon again that was killed")->callback(revive);
}
