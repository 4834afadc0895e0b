/** The private device as the loop uses it: its files, and the management daemon in the process. */
#pragma once

#include <string>
#include <vector>

struct Session {
    std::string name;
    std::string user;
    bool old = false; // more than a day
    bool pinned = false;
};
enum class OwnerFile {
    Registered,
    Ownerless, // exists, and names nobody
};

/** Brings accounts and files back to where every trial begins. Requests that hold the text `refused`
 * (null: none) will be refused whatever they ask for. */
void prepareDevice(const std::vector<Session>& sessions, OwnerFile owner_file, const char* refused);

/** What the log file holds since. */
std::string logFile();

/** What the files say, one fact a line, sorted. */
std::vector<std::string> fileFacts();

/** What was asked of daemon and shell since prepareDevice(), in order: "asked …", or "did …" where it
 * changed something. */
const std::vector<std::string>& requestFacts();
