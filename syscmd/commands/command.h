/**
 * What every handler begins with, written once: the check of the transaction and the reading of the
 * parameters. A handler hands over its words and the work to be done with the parameters, as plain
 * texts; strings stay here, at the boundary with the transaction.
 */
#pragma once

#include "common/common.h"

#include <string>

/** How a handler speaks of itself and of parameters that are missing. */
struct CommandWords {
    const char* file;        /**< base name of the handler's unit */
    const char* function;    /**< the handler's name */
    const char* unread;      /**< what the log says in front of "error reading …" */
    const char* answer;      /**< the response to a command with a missing parameter */
    short null_line;         /**< line of the statement about a null transaction */
    short unread_line;       /**< line of the statement about a missing parameter */
    signed char parameters;  /**< how many there are, at most MAX_PARAMETERS */
    bool code_first = false; /**< whether the code is set in front of that statement, not behind */
};

constexpr int MAX_PARAMETERS = 4;

/** The work of a handler, which sets code and response; `parameters` are the first, second, …. */
using CommandWork =
    void (*)(ITransaction& tx, std::string& response, const char* const* parameters);

/** Runs a handler's work on a transaction. A null transaction and a missing parameter are logged;
 * the latter fails the command, and what is behind it is not read. */
void runCommand(
    ITransaction* pTx, std::string& response, const CommandWords& words, CommandWork work
);

/** Makes `text`, and `rest` behind it, the response. */
void setResponse(std::string& response, const char* text, const char* rest = "");

/** An account name with its NUL. */
using AccountName = char[MAX_USERNAME_LENGTH + 1];

/** Cuts `name` to what an account name may hold; returns `cut`. */
const char* accountName(AccountName& cut, const char* name);
