#include "tests/faults/sweep.h"

#include "devkit/broker/transaction.h"
#include "tests/syscmd/statements.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <regex>

extern "C" int __lsan_do_recoverable_leak_check() __attribute__((weak));
extern "C" void __gcov_dump() __attribute__((weak));

namespace {

constexpr unsigned TRIAL_SECONDS = 20;

/** What the processes of the loop share with the one that reports. */
struct Report {
    Seen seen;
    Fault trial;
    std::size_t length;
    char found[1 << 16];
};
Report& report()
{
    static void* shared = mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return *static_cast<Report*>(shared);
}

/** A broker that takes an answer even when memory is exhausted: what comes of it is not its plug-in's
 * affair. */
struct Recipient final : Transaction {
    using Transaction::Transaction;
    int addResponseParam(const std::string& value) override
    {
        std::snprintf(texts[count % std::size(texts)], sizeof texts[0], "%s", value.c_str());
        return static_cast<int>(count++);
    }

    char texts[4][256] = {};
    std::size_t count = 0;
};

struct Outcome {
    TTransactionCode code = CODE_UNDEFINED;
    Facts responses;
    Facts files;
    Facts requests;
    bool threw = false;
    bool struck = false;
    long kept = 0;       // resources, and descriptors
    std::string unknown; // what was said that is no statement of the table
};

Outcome run(const Variant& variant, const Fault& fault, void (*execute)(ITransaction*))
{
    prepareDevice(variant.state);
    Outcome outcome;
    const long before = liveResources() + openDescriptors();
    {
        Recipient transaction(variant.command);
        try {
            outcome.struck = withFault(fault, [&] { execute(&transaction); });
        } catch (...) {
            outcome.threw = outcome.struck = true;
        }
        const Aside aside;
        outcome.code = transaction.getCode();
        outcome.responses.assign(
            transaction.texts, transaction.texts + std::min(transaction.count, std::size(transaction.texts)));
    }
    outcome.kept = liveResources() + openDescriptors() - before;
    outcome.files = fileFacts();
    outcome.requests = requestFacts();
    const bool speaks = fault.error == ENOMEM || std::strcmp(fault.kind, "ioctl") == 0;
    const std::string log = outcome.struck && speaks ? logFile() : "";
    for (const Statement& statement : statementsOf(log)) {
        outcome.unknown += rowOf(statement) != nullptr ? "" : statement.unit + ": " + statement.text;
    }
    return outcome;
}

/** The facts of `some` that `others` do not hold, `mark` before each. */
std::string lacking(Facts some, Facts others, const char* mark, const char* of_kind = "")
{
    std::sort(some.begin(), some.end());
    std::sort(others.begin(), others.end());
    Facts lacking;
    std::set_difference(some.begin(), some.end(), others.begin(), others.end(), std::back_inserter(lacking));
    std::string text;
    for (const std::string& fact : lacking) {
        text += fact.starts_with(of_kind) ? mark + fact + "; " : "";
    }
    return text;
}

/** Whether the requests that both made came in the same order. */
bool inOrder(const Facts& requests, const Facts& golden)
{
    auto at = golden.begin();
    for (const std::string& request : requests) {
        const auto next = std::find(at, golden.end(), request);
        at = next != golden.end() ? next + 1 : at;
        if (next == golden.end() && std::find(golden.begin(), golden.end(), request) != golden.end()) {
            return false;
        }
    }
    return true;
}

/** What was done otherwise than without the fault. A failure may leave undone what it likes, and the
 * files as they were; what was refused was not done. */
std::string difference(const Outcome& outcome, const Outcome& golden, const Facts& files_before)
{
    const bool failed = outcome.code == CODE_FAILED;
    Facts allowed = golden.requests;
    for (const std::string& fact : golden.requests) {
        if (failed && fact.starts_with("did ")) {
            allowed.push_back("asked " + fact.substr(4));
        }
    }
    std::string text = failed ? "" : lacking(golden.requests, outcome.requests, "-", "did");
    if (!failed || outcome.files != files_before) {
        text += lacking(golden.files, outcome.files, "-") + lacking(outcome.files, golden.files, "+");
    }
    text += lacking(outcome.requests, allowed, "+");
    return text.substr(0, text.size() - std::min<std::size_t>(text.size(), 2));
}

bool isForced(const Variant& variant, const Fault& fault, TTransactionCode code, const std::string& difference)
{
    const auto matches = [](const std::string& text, const std::string& pattern) {
        return std::regex_match(text, std::regex(pattern));
    };
    bool is_forced = false;
    for (std::size_t i = 0; i < forced().size(); ++i) {
        const Forced& row = forced()[i];
        if (row.code == code && matches(variant.name, row.commands) && matches(fault.kind, row.faults) &&
            matches(difference, row.difference)) {
            seen().forced[i] = is_forced = true;
        }
    }
    return is_forced;
}

void judge(
    const Variant& variant, const Fault& fault, const Outcome& outcome, const Outcome& golden, const Facts& before)
{
    if (outcome.threw) {
        found("an exception left execute");
    } else if (outcome.responses.size() != 1) {
        found(std::to_string(outcome.responses.size()) + " responses");
    }
    if (outcome.kept != 0) {
        found(std::to_string(outcome.kept) + " resources were left behind");
    }
    if (!outcome.unknown.empty()) {
        found("said " + outcome.unknown);
    }
    if (!inOrder(outcome.requests, golden.requests)) {
        found("requests out of order");
    }
    const std::string differs = difference(outcome, golden, before);
    const bool same_answer = outcome.code == golden.code && outcome.responses == golden.responses;
    const bool failed = outcome.code == CODE_FAILED;
    const bool must_be_forced = failed ? !differs.empty() : outcome.code != golden.code || !differs.empty();
    if (must_be_forced && !isForced(variant, fault, outcome.code, differs)) {
        found((failed || outcome.code == golden.code ? "" : "admitted what is else refused: ") + differs);
    }
    if (failed ? outcome.responses == Facts{"success"} : outcome.code == golden.code && !same_answer) {
        found("answered otherwise: " + lacking(outcome.responses, {}, ""));
    }
    if (!outcome.struck && !(same_answer && differs.empty())) {
        found("not as without a fault, though none struck: " + differs);
    }
}

} // namespace

Seen& seen()
{
    return report().seen;
}

void beginTrial(const Fault& fault)
{
    alarm(TRIAL_SECONDS);
    report().trial = fault;
    for (std::size_t i = 0; i < KINDS.size(); ++i) {
        seen().trials[i] += KINDS[i].name == fault.kind ? 1 : 0;
    }
}

void found(const std::string& what)
{
    Report& shared = report();
    const std::string line = nameOf(shared.trial) + ": " + what + '\n';
    if (shared.length + line.size() < sizeof shared.found) {
        std::memcpy(shared.found + shared.length, line.data(), line.size());
        shared.length += line.size();
    }
}

std::string isolated(const std::function<void()>& work)
{
    report().length = 0;
    report().trial = {};
    const pid_t child = fork();
    if (child == 0) {
        work();
        alarm(0);
        if (__lsan_do_recoverable_leak_check != nullptr && !underProot() && __lsan_do_recoverable_leak_check() != 0) {
            found("memory has leaked");
        }
        if (__gcov_dump != nullptr) {
            __gcov_dump(); // what has run here counts, too
        }
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (status != 0) {
        found("ended the process, status " + std::to_string(status));
    }
    return {report().found, report().length};
}

bool underProot()
{
    return strcmp(getenv("DEVICE_WAY"), "proot") == 0;
}

/** Bytes from one cut to the next: each, but where every system call is traced. */
static std::size_t cutStep()
{
    return underProot() ? 16 : 1;
}

void everyFault(const std::function<bool(const Fault&)>& trial)
{
    for (const Kind& kind : KINDS) {
        for (const int error : kind.errors) {
            for (const bool onward : {false, true}) {
                if (onward && &kind != &KINDS.front()) {
                    continue; // only memory stays exhausted
                }
                Fault fault = {kind.name, error, 1, onward, 0};
                for (bool struck = true; struck; ++fault.nth) {
                    fault.kept = 0;
                    struck = trial(fault);
                    while (error == CUT && struck && (fault.kept += cutStep(), trial(fault))) {
                    }
                }
            }
        }
    }
}

std::string sweep(const Variant& variant, void (*execute)(ITransaction*))
{
    return isolated([&] {
        shell_is_replayed = true;
        prepareDevice(variant.state);
        const Facts before = fileFacts();
        run(variant, {}, execute); // warms up
        const Outcome golden = run(variant, {}, execute);
        if (golden.code != variant.code || golden.responses != Facts{variant.response}) {
            found("without a fault: code " + std::to_string(golden.code) + ' ' + lacking(golden.responses, {}, ""));
            return;
        }
        everyFault([&](const Fault& fault) {
            beginTrial(fault);
            const Outcome outcome = run(variant, fault, execute);
            judge(variant, fault, outcome, golden, before);
            if (fault.kept % 16 == 0) { // the next command finds nothing of it
                judge(variant, {}, run(variant, {}, execute), golden, before);
            }
            return outcome.struck;
        });
    });
}
