#include "tools/soak/processes.h"

#include "common/mxl/bwdclient.h"
#include "devkit/boxwelld/files.h"
#include "tools/soak/observed.h"

#include <signal.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
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

/** Calls that wait: how often they are made is chance. */
constexpr long WAITING[] = {
    SYS_ppoll, SYS_recvfrom, SYS_read, SYS_wait4,
#ifdef SYS_poll
    SYS_poll,
#endif
};

/** Whether a traced process is about to make a call that does not wait. */
bool is_at_certain_call(pid_t process)
{
    __ptrace_syscall_info info = {};
    ptrace(PTRACE_GET_SYSCALL_INFO, process, sizeof info, &info);
    const auto call = static_cast<long>(info.entry.nr);
    return info.op == PTRACE_SYSCALL_INFO_ENTRY &&
           std::find(std::begin(WAITING), std::end(WAITING), call) == std::end(WAITING);
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
    for (int made = 0; lives && made <= calls;) {
        ptrace(PTRACE_SYSCALL, broker, nullptr, signal);
        lives = has_stopped(broker, status);
        const bool at_call = lives && WSTOPSIG(status) == CALL_STOP;
        made += at_call && is_at_certain_call(broker) ? 1 : 0;
        signal = at_call || !lives ? 0 : WSTOPSIG(status);
    }
    if (lives) {
        kill(broker, SIGKILL);
        waitpid(broker, nullptr, 0);
    }
    return lives;
}
