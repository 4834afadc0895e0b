/** What a device holds of accounts, owner and sessions: as the model has it, or as it was found. */
#pragma once

#include "devkit/boxwelld/account.h"

#include <cstdint>
#include <ctime>
#include <map>
#include <optional>
#include <set>
#include <string>

struct Session {
    std::string user; // the record's content
    time_t written = 0;
    bool pinned = false;
    unsigned mode = 0;

    bool operator==(const Session&) const = default;
};

struct State {
    std::map<std::int64_t, Account> accounts; // by id
    std::int64_t last_id = 0;                 // none is given twice
    std::set<std::string> remote_users;
    std::string cloud_owner;                 // the daemon's; empty: none
    std::optional<std::string> owner_file;   // its text
    bool upgraded = false;                   // the single sign-on flag is set
    std::optional<unsigned> directory;       // the mode of that of the sessions
    std::map<std::string, Session> sessions; // by token
    std::set<std::string> shared;            // names of shared-memory objects
    bool log_file = true;                    // it is there

    bool operator==(const State&) const = default;
};

/** A text in one line and quotes, what cannot be printed in hexadecimal. */
std::string shown(const std::string& text);

/** What of one state is not so in the other, a line each. */
std::string difference(const State& expected, const State& found);
