/** The loop: every fault in turn in one command, and what must hold after each. */
#pragma once

#include "common/common.h"
#include "tests/faults/faults.h"
#include "tests/faults/world.h"

#include <ostream>
#include <string>
#include <vector>

/** A command in a prepared state, and its answer without a fault. */
struct Variant {
    const char* name;
    std::vector<std::string> words;
    const char* as; // the requester's credentials; null: none
    TTransactionCode code;
    const char* response;
    const char* refused = nullptr; // as of prepareDevice()
    std::vector<Session> sessions = {};
    OwnerFile owner_file = OwnerFile::Registered;
};

inline void PrintTo(const Variant& variant, std::ostream* out)
{
    *out << variant.name;
}

/**
 * An outcome that the contract forces: the answer differs from what was done, or what was done from
 * what is done without the fault. `difference` is a regular expression for the whole difference:
 * "-" and a fact that is missing, "+" and one too many, "; " between them.
 */
struct Forced {
    const char* name;
    const char* variants; // a regular expression for their names
    const char* kinds;    // and for the fault's kind
    TTransactionCode code;
    const char* difference;
};
extern const std::vector<Forced> FORCED;

/** Statements of the log file that some fault must bring about. */
extern const std::vector<const char*> STATEMENTS;

/** What the loop has seen, in all processes. */
long trialsOf(std::size_t kind);
bool occurred(std::size_t forced);
bool wasSaid(std::size_t statement);

/** Runs the loop over one variant in a process of its own; returns what it found, a line each. */
std::string sweep(const Variant& variant, void (*execute)(ITransaction*));

/** Runs `work`, whose findings it returns, in a process of its own; tells the trial that ends it. */
std::string isolated(const std::function<void()>& work);
/** In `work`: the trial that begins now, and what was found in it. */
void beginTrial(const Fault& fault);
void found(const std::string& what);
/** Each error of each kind for n = 1, 2, 3 … until `trial` tells that the fault did not strike. */
void everyFault(const std::function<bool(const Fault&)>& trial);
