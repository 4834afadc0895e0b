/** The loop: every fault in turn in one command, and what must hold after each. */
#pragma once

#include "common/common.h"
#include "devkit/broker/command.h"
#include "tests/faults/world.h"
#include "tools/failing_calls/faults.h"

#include <ostream>

/** A command in a prepared state, and its answer without a fault: a row of commands.json. */
struct Variant {
    std::string name;
    Command command;
    TTransactionCode code;
    std::string response;
    Prepared state;
};
inline void PrintTo(const Variant& variant, std::ostream* out)
{
    *out << variant.name;
}

/**
 * An outcome that the contract forces, a row of forced.json: the answer differs from what was done, or
 * what was done from what is done without the fault. `difference` is the whole of it: "-" and a fact
 * that is missing, "+" and one too many, "; " between them. All but the name and the code are regular
 * expressions.
 */
struct Forced {
    std::string name;
    std::string commands;
    std::string faults;
    TTransactionCode code;
    std::string difference;
};

const std::vector<Variant>& variants();
const std::vector<Forced>& forced();

/** What the loop has seen, in all processes. */
struct Seen {
    long trials[64]; // of each kind
    bool forced[64]; // the outcomes that occurred
};
Seen& seen();

/** Runs the loop over one variant in a process of its own; returns what it found, a line each. */
std::string sweep(const Variant& variant, void (*execute)(ITransaction*));

/** Runs `work` in a process of its own; what it found, and the trial that ended it. */
std::string isolated(const std::function<void()>& work);
/** In `work`: the trial that begins now, and what was found in it. */
void beginTrial(const Fault& fault);
void found(const std::string& what);
/** Whether proot makes the device: then nothing can be traced, and replies are cut at every 16th byte. */
bool underProot();
/** Each error of each kind for n = 1, 2, 3 … until `trial` tells that the fault did not strike. */
void everyFault(const std::function<bool(const Fault&)>& trial);
