/** The private device as the loop uses it: its files, and the management daemon in the process. */
#pragma once

#include <string>
#include <vector>

using Facts = std::vector<std::string>;

/** In which state a command finds the device; accounts are those of seed.json. */
struct Prepared {
    bool records = false;   // session records: new, old, and pinned ones
    bool ownerless = false; // the owner file names nobody
    std::string refused;    // requests that hold this text are refused; empty: none
};
void prepareDevice(const Prepared& state);

/** What the files say, sorted. */
Facts fileFacts();

/** What was asked of daemon and shell since prepareDevice(), in order: "asked …", or "did …" where it
 * changed something. */
const Facts& requestFacts();

/** What the log file holds since. */
std::string logFile();
