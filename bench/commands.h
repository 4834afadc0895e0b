/** The commands that operations are measured by: one each, which succeeds. */
#pragma once

#include "bench/transaction.h"

#include <string>
#include <vector>

struct Command {
    std::vector<std::string> params; // the first is the operation's name
    const char* login;
};

/** alice owns the device; bob's membership is looked up. */
std::vector<Command> commands();

/** What the instant daemon answers each of their requests with: bob's record. */
const std::string& replyToCommands();

PlainTransaction transactionOf(const Command& command, int level);
