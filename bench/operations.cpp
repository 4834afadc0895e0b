// Each operation as a command through execute(), beside its floor: time, instructions, allocations,
// system calls. All of them succeed.
#include "bench/bare_log.h"
#include "bench/bare_operations.h"
#include "bench/commands.h"
#include "bench/count.h"
#include "bench/daemon.h"
#include "bench/families.h"
#include "bench/instructions.h"
#include "syscmd/handler.h"

#include <fstream>
#include <iterator>
#include <regex>

namespace {

/** All that a command brings about but the journal's entries, which are the file's: its effects on
 * the transaction, its requests, its statements without time and place. */
std::string outcomeOf(const Command& command, void carryOut(ITransaction&))
{
    static const std::regex PLACE("[A-Z][a-z]{2} [ 0-9][0-9] [0-9: ]{13} ([A-Z]+):[^:]+:[0-9]+ ");
    setLog(7, true);
    recordRequests(true);
    PlainTransaction transaction = transactionOf(command, 7);
    transaction.keeping = true;
    carryOut(transaction);
    recordRequests(false);
    std::ifstream file(LOG_FILE);
    const std::string log(std::istreambuf_iterator<char>(file), {});
    // The walk's own statements name their file and line.
    return transaction.effects + takeRequests() + std::regex_replace(log, PLACE, "\n$1 ");
}

void ourExecute(ITransaction& transaction)
{
    execute(&transaction);
}

/** The command at a level as work that can be repeated. */
std::function<void()> work(const Command& command, int level, void carryOut(ITransaction&))
{
    return [transaction = transactionOf(command, level), carryOut]() mutable {
        carryOut(transaction);
    };
}

void benchTime(
    Frame& frame, const Command& command, int level, bool file, const char* how, double goal
)
{
    const std::string name = command.params[0] + how;
    if (!frame.wants(name)) {
        return;
    }
    setLog(level, file);
    const auto timed = [&](void carryOut(ITransaction&)) {
        return [transaction = std::make_shared<PlainTransaction>(transactionOf(command, level)),
                carryOut] {
            carryOut(*transaction);
            return true;
        };
    };
    frame.compare(
        {.name = name, .against = "floor", .goal = goal}, timed(ourExecute), timed(bareExecute)
    );
    setLog(3, false);
}

void benchSystemCalls(
    Frame& frame,
    const std::string& name,
    const std::function<void()>& ours,
    const std::function<void()>& floor,
    const char* against,
    double goal
)
{
    const long mine = countSystemCalls(ours);
    if (mine >= 0) {
        const long least = countSystemCalls(floor);
        frame.count(name, against, static_cast<double>(mine), static_cast<double>(least), goal);
    }
}

void countCalls(Frame& frame, const Command& command)
{
    const auto ours = work(command, 3, ourExecute);
    const auto floor = work(command, 3, bareExecute);
    setLog(3, false);
    std::string name = command.params[0] + ", allocations";
    if (frame.wants(name)) {
        const Allocations mine = countAllocations(ours);
        frame.count(
            name, "floor", static_cast<double>(mine.calls),
            static_cast<double>(countAllocations(floor).calls), 1
        );
        if (mine.left != 0) {
            frame.fail(name + ": something is left behind");
        }
    }
    name = command.params[0] + ", system calls";
    if (frame.wants(name)) {
        benchSystemCalls(frame, name, ours, floor, "floor", 1);
    }
    name += ", owner file read once";
    if (command.params[0].starts_with("up") && frame.wants(name)) { // an update or upgrade
        benchSystemCalls(frame, name, ours, work(command, 3, bareExecuteReadingOnce), "floor", 0);
    }
}

void countInstructions(Frame& frame)
{
    if (frame.checksOnly() || !frame.wants("instructions")) {
        return;
    }
    const std::vector<double> counts = runCallgrind();
    const std::vector<Command> all = commands();
    if (counts.size() != 2 * all.size()) {
        frame.fail("instructions: no counts by callgrind");
        return;
    }
    for (std::size_t i = 0; i < all.size(); ++i) {
        frame.count(
            all[i].params[0] + ", instructions", "floor", counts[2 * i], counts[2 * i + 1], 1.1
        );
    }
}

} // namespace

void runUnderCallgrind()
{
    setReply(replyToCommands());
    setLog(3, false);
    for (const Command& command : commands()) {
        dumpInstructions(work(command, 3, ourExecute));
        dumpInstructions(work(command, 3, bareExecute));
    }
}

void benchOperations(Frame& frame)
{
    setReply(replyToCommands());
    for (const Command& command : commands()) {
        const std::string ours = outcomeOf(command, ourExecute); // first: it makes what is missing
        if (ours != outcomeOf(command, bareExecute)) {
            frame.fail(command.params[0] + ": the floor's outcome differs");
        }
        benchTime(frame, command, 3, false, ", level 3", 1.03);
        benchTime(frame, command, 7, true, ", level 7 and the file", 1.1);
        countCalls(frame, command);
    }
    countInstructions(frame);
}
