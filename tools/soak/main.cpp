/**
 * soak [COMMANDS] [--seed S] [--only N,...] [--tell]: on a device, runs the commands 1 to COMMANDS
 * of a seed, or only some of them. Exit status: 0; 1 when the model does not allow what was found,
 * with a first line "difference at N" (0: at the end); 2 when it cannot run. tools/soak/run makes
 * the device, and shrinks.
 */
#include "devkit/on_device.h"
#include "tools/soak/soak.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <cstring>

namespace {

struct Arguments {
    std::uint64_t commands = 1000;
    std::uint64_t seed = 1;
    std::vector<std::uint64_t> only;
    bool tell = false;
};

constexpr unsigned LONGEST_STEP_SECONDS = 120;

/** For what ends or stops the plug-in, and this program with it. */
volatile std::uintmax_t number_at_work = 0;

void print_difference(std::uintmax_t number, const char* step, const char* text)
{
    std::printf("difference at %ju\n%s\n%s\n", number, step, text);
    std::fflush(stdout);
}

void on_signal(int signal)
{
    print_difference(number_at_work, "", strsignal(signal));
    _exit(1);
}

void catch_signals()
{
    std::signal(SIGALRM, on_signal);
#ifndef __SANITIZE_ADDRESS__ // which tells more
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) {
        std::signal(signal, on_signal);
    }
#endif
}

/** Steps until one differs; the exit status. */
int soak(const Arguments& options)
{
    Soak soak(options.seed);
    const std::uint64_t count = options.only.empty() ? options.commands : options.only.size();
    const std::uint64_t grown_up = std::min<std::uint64_t>(1000, count / 2);
    catch_signals();
    try {
        for (std::uint64_t i = 1; i <= count; ++i) {
            const std::uint64_t number = options.only.empty() ? i : options.only[i - 1];
            number_at_work = number;
            alarm(LONGEST_STEP_SECONDS);
            soak.step(number);
            if (options.tell) {
                std::printf("%s\n", soak.last_step().c_str());
            }
            if (i == grown_up) {
                soak.begin_to_measure();
            }
        }
        number_at_work = 0; // none: all of them
        if (options.only.empty()) {
            soak.end();
        }
    } catch (const Difference& difference) {
        print_difference(number_at_work, soak.last_step().c_str(), difference.what());
        return 1;
    }
    std::printf("%s", soak.summary().c_str());
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    Arguments options;
    CLI::App app("Many commands on one device, each held against a model.", "soak");
    app.add_option("COMMANDS", options.commands)->check(CLI::PositiveNumber);
    app.add_option("--seed", options.seed);
    app.add_option("--only", options.only)->delimiter(',');
    app.add_flag("--tell", options.tell);
    CLI11_PARSE(app, argc, argv);
    try {
        if (!on_device()) {
            throw std::runtime_error(no_device("nothing"));
        }
        return soak(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "soak: %s\n", error.what());
        return 2;
    }
}
