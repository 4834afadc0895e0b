#include "devkit/device/agent/command.h"

#include "devkit/device/agent/signals.h"
#include "devkit/device/agent/terminal.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int GRACE_MS = 5000;
constexpr int NOT_FOUND = 127;
constexpr int NOT_EXECUTABLE = 126;

/** The client's environment, and the device's own variables as this process has them. */
void set_environment(const Request& request, const Own& own)
{
    std::vector<std::pair<std::string, std::string>> values;
    for (const std::string& name : own) {
        if (const char* value = std::getenv(name.c_str())) {
            values.emplace_back(name, value);
        }
    }
    clearenv();
    for (const std::string& entry : request.environment) {
        const std::size_t end = entry.find('=');
        if (end != std::string::npos && end > 0) {
            setenv(entry.substr(0, end).c_str(), entry.c_str() + end + 1, 1);
        }
    }
    for (const auto& [name, value] : values) {
        setenv(name.c_str(), value.c_str(), 1);
    }
}

[[noreturn]] void become(Request& request, const Own& own, bool on_terminal)
{
    setsid();
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (on_terminal) {
        ioctl(request.streams[0].get(), TIOCSCTTY, 0);
    }
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        dup2(request.streams[static_cast<std::size_t>(stream)].get(), stream);
    }
    default_signals();
    set_environment(request, own);
    if (chdir(request.folder.c_str()) != 0) {
        std::fprintf(
            stderr, "device: the device does not see the folder %s (%s); in / instead\n",
            request.folder.c_str(), std::strerror(errno)
        );
        if (chdir("/") != 0) {
            _exit(CANNOT);
        }
    }
    std::vector<char*> words;
    for (std::string& word : request.command) {
        words.push_back(word.data());
    }
    words.push_back(nullptr);
    execvp(words[0], words.data());
    const int error = errno;
    std::fprintf(stderr, "device: %s: %s\n", words[0], std::strerror(error));
    _exit(error == ENOENT ? NOT_FOUND : NOT_EXECUTABLE);
}

/** The command while it runs. */
class Running {
  public:
    Running(Fd client, pid_t process, const Fd& signals)
        : client_(std::move(client)), process_(process), signals_(signals)
    {
    }

    void wait()
    {
        while (!ended_) {
            pollfd events[] = {{signals_.get(), POLLIN, 0}, {client_.get(), POLLIN, 0}};
            if (poll(events, 2, left_ms_) == 0) {
                kill(-process_, SIGKILL);
                left_ms_ = -1;
            }
            if ((events[1].revents & (POLLIN | POLLHUP | POLLERR)) != 0) {
                hear_client();
            }
            for (int signal = 0; (signal = next_signal(signals_)) != 0;) {
                if (signal == SIGTERM) {
                    hang_up();
                    left_ms_ = GRACE_MS;
                }
            }
            see_end();
        }
    }

  private:
    void hear_client()
    {
        unsigned char signal = 0;
        if (read(client_.get(), &signal, sizeof signal) != sizeof signal) {
            client_ = Fd(-1);
            hang_up();
        } else if (signal < NSIG) {
            kill(-process_, signal);
        }
    }

    void hang_up()
    {
        for (const int signal : {SIGHUP, SIGTERM, SIGCONT}) {
            kill(-process_, signal);
        }
    }

    void see_end()
    {
        int status = 0;
        if (waitpid(process_, &status, WNOHANG) == process_) {
            ended_ = true;
            send_answer(
                client_, Sort::Status,
                WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status)
            );
        }
    }

    Fd client_;
    pid_t process_;
    const Fd& signals_;
    int left_ms_ = -1;
    bool ended_ = false;
};

/** Puts a pseudo-terminal in the place of the client's terminal, whose session the command cannot
 * be in. */
void give_terminal(const Fd& client, std::vector<Fd>& streams)
{
    PseudoTerminal terminal = open_terminal(streams[0]);
    send_answer(client, Sort::Terminal, 0, terminal.leading.get());
    for (Fd& stream : streams) {
        if (isatty(stream.get()) == 1) {
            stream = Fd(dup(terminal.following.get()));
        }
    }
}

} // namespace

void run_command(Fd client, Request request, const Own& own)
{
    const Fd signals = block_signals({SIGCHLD, SIGTERM});
    const bool on_terminal =
        isatty(request.streams[0].get()) == 1 && isatty(request.streams[1].get()) == 1;
    if (on_terminal) {
        give_terminal(client, request.streams);
    }
    const pid_t process = fork();
    if (process < 0) {
        throw_errno("fork");
    }
    if (process == 0) {
        become(request, own, on_terminal);
    }
    request.streams.clear();
    Running(std::move(client), process, signals).wait();
}
