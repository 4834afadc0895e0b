#include "devkit/broker/check/trial.h"

#include "devkit/broker/check/confine.h"

#include <elf.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

constexpr std::chrono::seconds MOST_TIME(10);
constexpr int EXIT_UNCONFINED = 120;
constexpr int EXIT_NOT_EXECUTED = 121;
constexpr std::size_t MOST_OUTPUT = 65536;

#ifdef __arm__
constexpr int OWN_MACHINE = EM_ARM;
#else
constexpr int OWN_MACHINE = EM_X86_64;
#endif

// What plugin-trial prints of a plug-in that keeps the contract.
constexpr const char* ANSWER =
    "loaded\nmoniker /root/devices\nmethod userstate\nbody type jobstate\n"
    "code 1\nresponse operation unknown\n";

struct Outcome {
    std::string output;
    int status = 0; // as wait tells it
    bool in_time = true;
};

[[noreturn]] void execute(const Words& words, int output)
{
    std::vector<char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    setpgid(0, 0);
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    dup2(nothing, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    if (!confine_this_process()) {
        _exit(EXIT_UNCONFINED);
    }
    execvp(arguments[0], arguments.data());
    _exit(EXIT_NOT_EXECUTED);
}

/** Reads until the child's end of the pipe is closed; false when that takes too long. */
bool read_output(int pipe, std::string& output)
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + MOST_TIME;
    std::array<char, 4096> chunk{};
    while (true) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
        pollfd waiting = {pipe, POLLIN, 0};
        if (left.count() <= 0 || poll(&waiting, 1, static_cast<int>(left.count())) == 0) {
            return false;
        }
        const ssize_t got = read(pipe, chunk.data(), chunk.size());
        if (got <= 0) {
            return true;
        }
        if (output.size() < MOST_OUTPUT) {
            output.append(chunk.data(), static_cast<std::size_t>(got));
        }
    }
}

Outcome run(const Words& words)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw std::runtime_error(std::string("no pipe: ") + std::strerror(errno));
    }
    const pid_t child = fork();
    if (child == 0) {
        execute(words, ends[1]);
    }
    close(ends[1]);
    Outcome outcome;
    if (child < 0) {
        close(ends[0]);
        throw std::runtime_error(std::string("no child process: ") + std::strerror(errno));
    }
    setpgid(child, child);
    outcome.in_time = read_output(ends[0], outcome.output);
    close(ends[0]);
    kill(-child, SIGKILL); // what it has started, too
    waitpid(child, &outcome.status, 0);
    return outcome;
}

/** The command that tries the library, or in `why_not` why there is none. */
Words command_for(const std::string& library, const Profile& profile, std::string& why_not)
{
    const fs::path folder = fs::read_symlink("/proc/self/exe").parent_path();
    const bool native = profile.machine == OWN_MACHINE;
    const fs::path trial = folder / (native ? "plugin-trial" : "armhf/plugin-trial");
    const fs::path sysroot = folder / "armhf-sysroot";
    if (!native && profile.machine != EM_ARM) {
        why_not = "this machine cannot run it";
    } else if (!fs::exists(trial)) {
        why_not = "there is no " + trial.string() + (native ? "" : " (./dev build armhf makes it)");
    } else if (!native && !fs::exists(sysroot)) {
        why_not = "there is no " + sysroot.string();
    }
    // A library with a path of its own would not be looked for by the program's.
    const std::string libraries = "LD_LIBRARY_PATH=" + trial.parent_path().string();
    const std::string path = fs::absolute(library).string();
    if (native) {
        return {"env", libraries, trial.string(), path};
    }
    return {"qemu-arm", "-L", sysroot.string(), "-E", libraries, trial.string(), path};
}

std::string how_it_went(const Outcome& outcome)
{
    if (!outcome.in_time) {
        return "no end within " + std::to_string(MOST_TIME.count()) + " s";
    }
    if (WIFSIGNALED(outcome.status)) {
        return std::string("ended by a signal: ") + strsignal(WTERMSIG(outcome.status));
    }
    return "exit status " + std::to_string(WEXITSTATUS(outcome.status));
}

Row judge(const Outcome& outcome)
{
    if (outcome.in_time && WIFEXITED(outcome.status) && WEXITSTATUS(outcome.status) == 0 &&
        outcome.output == ANSWER) {
        return {
            "trial",
            "loaded; an unknown operation is refused: CODE_FAILED, \"operation unknown\"",
            {}};
    }
    std::string said = outcome.output;
    for (std::size_t at = 0; (at = said.find('\n', at)) != std::string::npos;) {
        said.replace(at, 1, at + 1 == said.size() ? "" : ", ");
    }
    const std::string found =
        how_it_went(outcome) + "; " + (said.empty() ? "nothing was said" : said);
    return {
        "trial", found,
        Finding{
            "the plug-in does not carry out an unknown operation as it should",
            "the broker would get the same: it loads the library, calls execute, and takes "
            "moniker, method, body type, code 1 and the response \"operation unknown\"",
            "as far as it got is told above; after \"loaded\" look at execute and at the order of "
            "the transaction's virtual functions (common/transaction.h), before it at what the "
            "loader says"}};
}

} // namespace

Row trial_row(const std::string& library, const Profile& profile)
{
    std::string why_not;
    const Words command = command_for(library, profile, why_not);
    if (why_not.empty()) {
        const Outcome outcome = run(command);
        const int code = WIFEXITED(outcome.status) ? WEXITSTATUS(outcome.status) : 0;
        if (code != EXIT_UNCONFINED && code != EXIT_NOT_EXECUTED) {
            return judge(outcome);
        }
        why_not = code == EXIT_UNCONFINED ? "this system cannot confine a process (seccomp)"
                                          : "cannot execute " + command.front();
    }
    return {"trial", "not run: " + why_not, {}};
}

Row no_trial_row()
{
    return {"trial", "not run: it cannot be loaded before the findings above are mended", {}};
}
