/**
 * device-agent start FOLDER COMMAND [ARG...]
 * device-agent serve [VARIABLE...]
 *
 * "start" listens in the state folder FOLDER, starts COMMAND (the keeper, with a device) in a
 * session of its own, and waits until an agent answers on the device. Exit status: 0, or 125 when
 * COMMAND ends before; 128
 * + the signal's number after one that ends this process, and COMMAND with it. FOLDER/pid tells
 * COMMAND's process.
 *
 * "serve" is that agent: it carries out the clients' requests on the socket that AGENT_FD names,
 * until it is asked to stop or gets SIGTERM. Commands have the named variables as it has them
 * itself.
 */
#include "devkit/device/agent/command.h"
#include "devkit/device/agent/signals.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string_view>

namespace {

/** A machine under load takes its time; what hangs on the device ends by deadlines of its own
 * before. */
constexpr int START_MS = 180000;

/** The child of "start". */
[[noreturn]] void become_device(const Fd& listener, const std::string& folder, char** command)
{
    setsid();
    default_signals();
    try {
        const Fd file = open_file(folder + "/pid", O_WRONLY | O_CREAT | O_TRUNC);
        overwrite(file, folder + "/pid", std::to_string(getpid()) + '\n');
    } catch (const std::exception& error) {
        std::fprintf(stderr, "device: %s\n", error.what());
        _exit(CANNOT);
    }
    const Fd passed_on(dup(listener.get())); // without close-on-exec
    setenv("AGENT_FD", std::to_string(passed_on.get()).c_str(), 1);
    execvp(command[0], command);
    std::fprintf(stderr, "device: %s: %s\n", command[0], std::strerror(errno));
    _exit(CANNOT);
}

/** Waits for the agent's answer; 0, or what "start" ends with. */
int await_agent(const Fd& agent, const Fd& signals)
{
    pollfd events[] = {{agent.get(), POLLIN, 0}, {signals.get(), POLLIN, 0}};
    if (poll(events, 2, START_MS) == 0) {
        std::fprintf(
            stderr, "device: no agent answered on the device within %d s\n", START_MS / 1000
        );
    }
    if (const int signal = next_signal(signals)) {
        return 128 + signal;
    }
    return events[0].revents != 0 && receive_answer(agent) ? 0 : CANNOT;
}

int start(const std::string& folder, char** command)
{
    const Fd signals = block_signals({SIGINT, SIGTERM, SIGHUP});
    pid_t device = 0;
    {
        const Fd listener = listen_in(folder);
        device = fork();
        if (device == 0) {
            become_device(listener, folder, command);
        }
    }
    if (device < 0) {
        throw_errno("fork");
    }
    int status = CANNOT;
    try {
        const Fd agent = connect_in(folder);
        send_request(agent, {.kind = "wait"});
        status = await_agent(agent, signals);
    } catch (const std::exception&) { // it has ended before it could be asked
    }
    if (status != 0) {
        kill(device, SIGTERM);
        waitpid(device, nullptr, 0);
    }
    return status;
}

/** Carries out the request of one client, in a process of its own. */
void attend(Fd client, const Own& own)
{
    std::optional<Request> request = receive_request(client);
    if (!request) {
        return;
    }
    if (request->kind == "run") {
        run_command(std::move(client), std::move(*request), own);
    } else if (request->kind == "stop") {
        kill(getppid(), SIGTERM);
    } else {
        send_answer(client, Sort::Status, 0);
    }
}

/** Ends every command that runs, then returns. */
void end_commands(const std::set<pid_t>& clients)
{
    for (const pid_t client : clients) {
        kill(client, SIGTERM);
    }
    while (waitpid(-1, nullptr, 0) > 0 || errno == EINTR) {
    }
}

int serve(const Own& own)
{
    const char* number = std::getenv("AGENT_FD");
    const Fd listener(number == nullptr ? -1 : std::atoi(number));
    if (fcntl(listener.get(), F_SETFD, FD_CLOEXEC) != 0) {
        throw_errno("AGENT_FD");
    }
    // Commands do not hold what the device has open: the lock of its state is one of these.
    close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const Fd signals = block_signals({SIGTERM, SIGCHLD});
    std::set<pid_t> clients;
    for (;;) {
        pollfd events[] = {{listener.get(), POLLIN, 0}, {signals.get(), POLLIN, 0}};
        poll(events, 2, -1);
        for (int signal = 0; (signal = next_signal(signals)) != 0;) {
            if (signal == SIGTERM) {
                end_commands(clients);
                return 0;
            }
        }
        for (pid_t ended = 0; (ended = waitpid(-1, nullptr, WNOHANG)) > 0;) {
            clients.erase(ended);
        }
        if ((events[0].revents & POLLIN) == 0) {
            continue;
        }
        Fd client(accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
        const pid_t child = client.get() < 0 ? -1 : fork();
        if (child == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            attend(std::move(client), own);
            std::_Exit(0);
        }
        if (child > 0) {
            clients.insert(child);
        }
    }
}

int run(int argc, char** argv)
{
    const std::string_view mode = argc > 1 ? argv[1] : "";
    if (mode == "start" && argc > 3) {
        return start(argv[2], argv + 3);
    }
    if (mode == "serve") {
        return serve(Own(argv + 2, argv + argc));
    }
    std::fputs(
        "usage: device-agent start FOLDER COMMAND [ARG...]\n"
        "       device-agent serve [VARIABLE...]\n",
        stderr
    );
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "device: %s\n", error.what());
        return CANNOT;
    }
}
