/**
 * device-keeper [--proot] [--remove DIR]... COMMAND [ARG...]
 *
 * Runs a device's command and sees to it that nothing of the device outlives it. Two processes: the
 * front one is what the caller waits for and signals; the other is the parent that orphans of the
 * device come back to. It ends them when the command has ended, and also when the front one is
 * killed, since the kernel tells it of that.
 *
 * The command reports its exit status as a decimal line to the descriptor named by KEEPER_FD; a
 * command that ends without a report ends with its own status. Exit status: that one; 128 + the
 * signal's number after SIGINT, SIGTERM or SIGHUP; 125 when the command cannot be run.
 */
#include "devkit/device/keeper/descendants.h"
#include "devkit/device/keeper/old_calls.h"

#include <linux/capability.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr int CANNOT_RUN = 125;

struct Job {
    bool proot = false;
    std::vector<fs::path> remove;
    char** command = nullptr;
    sigset_t callers_mask{};
    sigset_t signals{};
};

int failed(const char* what)
{
    std::fprintf(stderr, "device: %s: %s\n", what, std::strerror(errno));
    return CANNOT_RUN;
}

int exit_status(int wait_status)
{
    return WIFSIGNALED(wait_status) ? 128 + WTERMSIG(wait_status) : WEXITSTATUS(wait_status);
}

/** Removes the folder even if the device took the rights to it away from its owner. */
void remove_folder(const fs::path& folder)
{
    std::error_code ignored;
    fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, ignored);
    for (auto entry = fs::recursive_directory_iterator(folder, ignored);
         entry != fs::recursive_directory_iterator(); entry.increment(ignored)) {
        if (entry->is_directory(ignored) && !entry->is_symlink(ignored)) {
            fs::permissions(*entry, fs::perms::owner_all, fs::perm_options::add, ignored);
        }
    }
    fs::remove_all(folder, ignored);
}

[[noreturn]] void run_command(const Job& job, int report)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    sigprocmask(SIG_SETMASK, &job.callers_mask, nullptr);
    setenv("KEEPER_FD", std::to_string(report).c_str(), 1);
    // proot's files lie on the host: an immutable one could not be removed.
    if (job.proot) {
        prctl(PR_CAPBSET_DROP, CAP_LINUX_IMMUTABLE);
    }
    if (job.proot && !refuse_newer_calls()) {
        _exit(failed("seccomp filter"));
    }
    execvp(job.command[0], job.command);
    _exit(failed(job.command[0]));
}

/** Reaps what has ended; true when the command's own process was among it. */
bool command_ended(pid_t command, int& status)
{
    bool ended = false;
    int wait_status = 0;
    for (pid_t pid = 0; (pid = waitpid(-1, &wait_status, WNOHANG)) > 0;) {
        if (pid == command) {
            status = exit_status(wait_status);
            ended = true;
        }
    }
    return ended;
}

/** Waits for the command's report, its end, or the order to stop; the command's status. */
int await_command(pid_t command, int report, int signals)
{
    int status = CANNOT_RUN;
    for (;;) {
        std::array<pollfd, 2> events{{{report, POLLIN, 0}, {signals, POLLIN, 0}}};
        if (poll(events.data(), events.size(), -1) < 0) {
            continue;
        }
        std::array<char, 16> line{};
        if ((events[0].revents & POLLIN) != 0 && read(report, line.data(), line.size() - 1) > 0) {
            return static_cast<int>(std::strtol(line.data(), nullptr, 10));
        }
        if ((events[0].revents & POLLHUP) != 0) {
            report = -1; // nobody is left to report
        }
        signalfd_siginfo signal{};
        if ((events[1].revents & POLLIN) == 0 || read(signals, &signal, sizeof signal) < 0) {
            continue;
        }
        if (signal.ssi_signo == SIGTERM || command_ended(command, status)) {
            return status;
        }
    }
}

int keep(const Job& job, pid_t front)
{
    // A terminal's Ctrl-\ is for the whole group, and is not to leave the device without a keeper.
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, nullptr);
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    std::array<int, 2> report{};
    const int signals = signalfd(-1, &job.signals, SFD_CLOEXEC);
    if (signals < 0 || pipe(report.data()) != 0) {
        return failed("pipe");
    }
    int status = CANNOT_RUN;
    const pid_t command = getppid() == front ? fork() : -1;
    if (command == 0) {
        close(report[0]);
        run_command(job, report[1]);
    }
    close(report[1]);
    if (command > 0) {
        status = await_command(command, report[0], signals);
    }
    end_descendants();
    for (const auto& folder : job.remove) {
        remove_folder(folder);
    }
    return status;
}

/** Waits for the keeping process and hands it the caller's wish to end. */
int await_keeper(pid_t keeper, const sigset_t& signals)
{
    int stopped_by = 0;
    for (int wait_status = 0;;) {
        siginfo_t signal{};
        if (sigwaitinfo(&signals, &signal) < 0) {
            continue;
        }
        if (signal.si_signo == SIGCHLD) {
            if (waitpid(keeper, &wait_status, WNOHANG) == keeper) {
                return stopped_by != 0 ? 128 + stopped_by : exit_status(wait_status);
            }
        } else if (signal.si_signo != SIGINT || signal.si_code != SI_KERNEL) {
            // A terminal's Ctrl-C has reached the command too, which decides what it means.
            stopped_by = signal.si_signo;
            kill(keeper, SIGTERM);
        }
    }
}

bool parse(Job& job, char** arguments)
{
    for (; *arguments != nullptr; ++arguments) {
        const std::string_view argument = *arguments;
        if (argument == "--proot") {
            job.proot = true;
        } else if (argument == "--remove" && arguments[1] != nullptr) {
            job.remove.emplace_back(*++arguments);
        } else {
            break;
        }
    }
    job.command = arguments;
    return *arguments != nullptr;
}

} // namespace

int main(int, char** arguments)
{
    Job job;
    if (!parse(job, arguments + 1)) {
        std::fputs("usage: device-keeper [--proot] [--remove DIR]... COMMAND [ARG...]\n", stderr);
        return 2;
    }
    sigemptyset(&job.signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGCHLD}) {
        sigaddset(&job.signals, signal);
    }
    sigprocmask(SIG_BLOCK, &job.signals, &job.callers_mask);
    const pid_t front = getpid();
    const pid_t keeper = fork();
    if (keeper < 0) {
        return failed("fork");
    }
    return keeper == 0 ? keep(job, front) : await_keeper(keeper, job.signals);
}
