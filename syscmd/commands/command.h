/**
 * What handlers share. Parameters stay strings in a handler, bytes behind a NUL included; they are
 * C strings only for the routines that take these. They are compared, searched and cut as views: a
 * member of std::string is one more symbol that loading has to find, and 100 bytes of a device.
 */
#pragma once

#include "common/log.h"
#include "common/transaction.h"

#include <span>
#include <string>
#include <string_view>

/** What a handler says, by its own name, of a null transaction. */
#define LOG_NO_TRANSACTION(line)                                                                   \
    LOG_AT(line, Error, "[syscmd:%s] invalid input arguments", __func__)

/** What the log says of a missing parameter, whatever the parameters of the operation are. */
inline constexpr std::string_view UNREAD =
    "error reading username/password/email params from request";

/**
 * Reads a handler's parameters, the first, second, …; what is behind a missing one is not read.
 *
 * @param values  receive the parameters
 * @return whether all were there
 */
bool readParameters(const ITransaction& tx, std::span<std::string> values);

/** What an account name may hold of a text: its first MAX_USERNAME_LENGTH bytes. */
std::string accountName(const std::string& text);

/** Fails the command with `text`, and `rest` behind it, as its response. */
void fail(ITransaction& tx, std::string& response, const char* text, std::string_view rest = {});

/** Ends the command well, with "success" as its response. */
void succeed(ITransaction& tx, std::string& response);
