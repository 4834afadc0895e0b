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
#include <numeric>

namespace {

struct Arguments {
    std::uint32_t commands = 1000;
    std::uint32_t seed = 1;
    std::vector<std::uint32_t> only;
    bool tell = false;
};

constexpr unsigned LONGEST_STEP_SECONDS = 120;

/** For what ends or stops the plug-in, and this program with it. */
volatile std::uint32_t number_at_work = 0;

void print_difference(std::uint32_t number, const char* step, const char* text)
{
    std::printf("difference at %u\n%s\n%s\n", number, step, text);
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
    std::vector<std::uint32_t> numbers = options.only;
    if (numbers.empty()) {
        numbers.resize(options.commands);
        std::iota(numbers.begin(), numbers.end(), 1);
    }
    const std::size_t grown_up = std::min<std::size_t>(1000, numbers.size() / 2);
    catch_signals();
    try {
        for (std::size_t done = 0; done < numbers.size(); ++done) {
            if (done == grown_up) {
                soak.begin_to_measure();
            }
            number_at_work = numbers[done];
            alarm(LONGEST_STEP_SECONDS);
            soak.step(numbers[done]);
            if (options.tell) {
                std::printf("%s\n", soak.last_step().c_str());
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
