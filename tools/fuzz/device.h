/** The device as a case lays it out, in the process: the daemon's replies, what tools print, the
 * files. */
#pragma once

#include "common/transaction.h"
#include "tools/failing_calls/faults.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

/** What the client library brings: without a text, no reply; not even that where it fails. */
struct Reply {
    bool fails = false;
    std::optional<std::string> text;
};

struct Record {
    std::string content;
    long age = 0;
    bool pinned = false;
    unsigned mode = 0004;
};

struct Files {
    std::optional<std::string> owner;
    bool upgraded = false;
    std::map<std::string, Record> records; // of sessions
    std::set<std::string> objects;         // their shared memory
    std::string told() const;
};

/**
 * A case in words: fields, an empty line between them, a letter and a colon in front of each. w: a
 * word of the command, a: LOGIN:PASSWORD, o: the owner file, r: a reply, n: a call of the client
 * library that fails, e: one without a reply, d: what the next device tool prints, s: AGE NAME
 * CONTENT of a record, p: of a pinned one, f: KIND ERROR NTH of a fault. What is left out is as
 * usual.
 */
struct Case {
    explicit Case(const std::string& input);

    Reply reply(std::size_t index, const std::string& request) const;
    std::string printed(std::size_t index) const
    {
        return index < prints.size() ? prints[index] : "usual\n";
    }

    std::vector<std::string> words;
    std::optional<std::string> credentials;
    std::vector<Reply> replies;
    std::vector<std::string> prints;
    Files files;
    Fault fault;
    bool is_contained = true; // touches no other file
};

/** What has become of a command. */
struct Outcome {
    std::vector<std::string> asked; // the daemon, and the shell
    std::vector<std::string> responses;
    TTransactionCode code = CODE_UNDEFINED;
    std::string refusal; // what a strict build says of one
    Files files;
    std::string told() const;
};

void prepare(const Case& test);
/** Since then; responses are added by the transaction. */
extern Outcome device;
Files filesNow();
bool canPin();

/** What the contract has the command do, read off it line by line. */
Outcome foretold(const Case& test);
std::string loginOf(const Case& test);
bool isOwnersName(const Case& test, const std::string& name);
/** Whether the requester is the owner, or a member by the daemon's first reply. */
bool isOwnersOwn(const Case& test);
bool isMembersOwn(const Case& test);
/** What a new session does to the records. */
void foretellSession(Files& files, const std::string& user, const std::string& token, bool pinned);
