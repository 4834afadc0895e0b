#include "tools/soak/processes.h"

#include "common/mxl/bwdclient.h"
#include "devkit/boxwelld/files.h"
#include "tools/soak/observed.h"

#include <signal.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace {

constexpr int WAIT_MS = 20000;

bool listens()
{
    return access(PATHS.socket.c_str(), F_OK) == 0;
}

template<class Condition> void wait_until(const Condition& holds, const char* what)
{
    for (int ms = 0; !holds(); ++ms) {
        if (ms > WAIT_MS) {
            throw std::runtime_error(what);
        }
        usleep(1000);
    }
}

/** Waits for a traced process; false: it has ended. */
bool has_stopped(pid_t process, int& status)
{
    return waitpid(process, &status, 0) == process && WIFSTOPPED(status);
}

} // namespace

Daemon::Daemon()
{
    const pid_t devices = std::stoi(read_text("/run/.boxwelld.pid"));
    kill(devices, SIGTERM);
    wait_until([] { return !listens(); }, "the device's daemon does not end");
    start();
}

Daemon::~Daemon()
{
    if (process_ > 0) {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
}

void Daemon::start()
{
    process_ = fork();
    if (process_ == 0) {
        execlp("boxwelld", "boxwelld", "serve", nullptr);
        _exit(127);
    }
    wait_until(
        [&] {
            if (waitpid(process_, nullptr, WNOHANG) != 0) {
                throw std::runtime_error("the daemon cannot be started");
            }
            return listens();
        },
        "the daemon does not listen"
    );
}

void Daemon::revive()
{
    waitpid(process_, nullptr, 0);
    unlink(PATHS.socket.c_str());
    start();
}

void Daemon::settle()
{
    char request[] = "?";
    char* reply = nullptr;
    int length = 0;
    process_request_bwdclient(request, 1, &reply, &length);
    std::free(reply);
}

void Daemon::end()
{
    int status = 0;
    kill(process_, SIGTERM);
    waitpid(process_, &status, 0);
    process_ = -1;
    if (status != 0) {
        throw std::runtime_error("the daemon ended with wait status " + std::to_string(status));
    }
}

bool run_killed(const Plugin& plugin, const Command& command, int calls)
{
    const pid_t broker = fork();
    if (broker == 0) {
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        raise(SIGSTOP);
        plugin.run(command);
        _exit(0);
    }
    int status = 0;
    bool lives = has_stopped(broker, status);
    ptrace(PTRACE_SETOPTIONS, broker, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    constexpr int CALL_STOP = SIGTRAP | 0x80;
    int signal = 0;
    for (int stops = 0; lives && stops < 2 * calls;) { // a call stops it at its begin and its end
        ptrace(PTRACE_SYSCALL, broker, nullptr, signal);
        lives = has_stopped(broker, status);
        const bool at_call = lives && WSTOPSIG(status) == CALL_STOP;
        stops += at_call ? 1 : 0;
        signal = at_call || !lives ? 0 : WSTOPSIG(status);
    }
    if (lives) {
        kill(broker, SIGKILL);
        waitpid(broker, nullptr, 0);
    }
    return lives;
}
