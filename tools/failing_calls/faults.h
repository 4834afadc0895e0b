/** Faults in the calls that the shipped units make: which call, which time, with which error. */
#pragma once

#include <cstdio>
#include <functional>
#include <span>
#include <string>
#include <vector>

/** Outcomes that errno has no number for. */
enum Unnumbered : int {
    HALF = 1000, // a read or write of half the bytes
    NOBODY,      // a look-up that finds no entry
    UNSENT,      // the daemon is not reached
    LOST,        // carried out, but the call fails
    NO_REPLY,    // carried out, the call succeeds without a reply
    CUT,         // carried out; Fault::kept bytes of the reply arrive
};

/** Calls that fail in the same ways, counted together. */
struct Kind {
    const char* name;
    std::vector<int> errors;
    std::vector<const char*> calls = {}; // where they are not all called as the kind
};
extern const std::vector<Kind> KINDS;

struct Fault {
    const char* kind = ""; // a Kind's name; "": no fault
    int error = 0;
    int nth = 1;
    bool onward = false; // the n-th call and all that follow
    std::size_t kept = 0;
};
std::string nameOf(const Fault& fault);

/** A fault, how many of its calls were made, and whether it struck. */
struct Trial {
    Fault fault;
    int seen = 0;
    bool struck = false;
};

/** Arms faults around `call`; whether one struck. */
bool withFaults(std::span<Trial> trials, const std::function<void()>& call);
/** The same with one. */
bool withFault(const Fault& fault, const std::function<void()>& call);

/** The error with which the call at hand is to fail; 0: it is not. */
int strike(const char* kind);
bool faultStruck();
/** How much of a text to be cut arrives; a fault that leaves it whole has not struck. */
std::size_t cutLength(std::size_t whole);

/** Work of the test inside a call under test: no faults, and its memory does not count. */
struct Aside {
    Aside();
    Aside(const Aside&) = delete;
    ~Aside();
    const bool armed;
    const long live;
};

/** Blocks, streams, directories and compiled expressions that were not given back. */
long liveResources();
/** A block that the caller of a call under test is to release. */
void countBlock();
/** Descriptors that are open. */
int openDescriptors();

/** What the shell's commands print, asked once; and what becomes of commands that only do. */
extern bool shell_is_replayed;
extern std::function<void(const char*)> on_command;
/** What a command prints, where the program tells it. */
extern std::function<std::string(const char*)> on_print;
/** What becomes of the journal's entries: the unit's CODE_FILE, and the text. */
extern std::function<void(const char* file, const char* text)> on_entry;
/** Is told of a path that a call under test is about to write. */
extern std::function<void(const char* path)> on_writing;
