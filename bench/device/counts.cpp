/**
 * The instructions of each operation of the device's plug-in beside its floor's, as an emulator
 * counts them that runs this program with the plug-in of counter.cpp; docs/performance.md. Runs on
 * a private device.
 */
#include "bench/bare_log.h"
#include "bench/commands.h"
#include "bench/daemon.h"
#include "bench/device/floor.h"
#include "bench/device/mark.h"
#include "bench/ratios.h"
#include "syscmd/handler.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>

namespace {

constexpr double GOAL = 1.15;
constexpr int RUNS_BEFORE = 10; // so that nothing is done for the first time

void ourExecute(ITransaction& transaction)
{
    execute(&transaction);
}

void nothing(ITransaction& /*transaction*/) {}

/** One piece of work, of which the emulator's plug-in tells. */
void run(const Command& command, void carryOut(ITransaction&))
{
    PlainTransaction transaction = transactionOf(command, 3);
    for (int i = 0; i < RUNS_BEFORE; ++i) {
        carryOut(transaction);
    }
    syscall(MARK, MARK_BEGIN);
    carryOut(transaction);
    syscall(MARK, MARK_END);
}

/** Before anything else is allocated: where texts lie decides how many instructions some need. */
void runAll()
{
    unlink(LOG_FILE);
    setReply(replyToCommands());
    run(commands()[0], nothing);
    for (const Command& command : commands()) {
        run(command, ourExecute);
        run(command, floorExecute);
    }
}

/** The sums of what the emulator's plug-in has written. */
std::vector<double> readSums(const std::string& path)
{
    std::vector<double> sums;
    std::ifstream file(path);
    bool is_sum = true;
    for (std::string line; std::getline(file, line);) {
        if (is_sum) {
            sums.push_back(std::strtod(line.c_str(), nullptr));
        }
        is_sum = line.empty();
    }
    return sums;
}

/** A row for each command; none when the counts are not those of all commands. */
Table tableOf(const std::vector<double>& sums)
{
    Table table;
    const std::vector<Command> all = commands();
    if (sums.size() != 1 + 2 * all.size()) {
        return table;
    }
    const double marks = sums[0];
    for (std::size_t i = 0; i < all.size(); ++i) {
        const double ours = sums[1 + 2 * i] - marks;
        const double floor = sums[2 + 2 * i] - marks;
        char remark[64];
        std::snprintf(remark, sizeof remark, "%.0f of %.0f", ours, floor);
        const double ratio = ours / floor;
        table.push_back(
            {all[i].params[0] + ", instructions", "floor", ratio, ratio, ratio, GOAL, remark}
        );
    }
    return table;
}

/** The addresses that the counts are of. */
void copyMaps(const std::string& path)
{
    std::ofstream(path) << std::ifstream("/proc/self/maps").rdbuf();
}

} // namespace

int main(int argc, char** argv)
{
    runAll();
    CLI::App app("Counts the instructions of the device's plug-in.");
    std::string counts;
    std::string committed;
    bool save = false;
    bool check = false;
    app.add_option("COUNTS", counts, "the file that the emulator's plug-in writes")->required();
    CLI::Option* const option =
        app.add_option("--committed", committed, "a file of ratios that this run is held against");
    app.add_flag("--save", save, "this run's ratios replace them")->needs(option);
    app.add_flag("--check", check, "a missed goal is a failure");
    CLI11_PARSE(app, argc, argv);

    copyMaps(counts + ".maps");
    const Table table = tableOf(readSums(counts));
    if (table.empty()) {
        std::fprintf(stderr, "no counts in %s: not by the emulator's plug-in?\n", counts.c_str());
        return 1;
    }
    printHead();
    bool met = true;
    for (const Row& row : table) {
        print(row);
        met = met && meetsGoal(row);
    }
    printSummary(table);
    if (!committed.empty()) {
        printRegressions(table, committed);
    }
    if (save && !writeRatios(committed, table)) {
        std::fprintf(stderr, "%s: %s\n", committed.c_str(), std::strerror(errno));
        return 1;
    }
    return check && !met ? 1 : 0;
}
