/**
 * What a strict build (SYSCMD_STRICT) refuses beyond the contract: parameters that could change the
 * structure of a request, a shell's command, a path or the log, and members who act on an account
 * that is not theirs. In any other build nothing of it is left. docs/security.md tells why.
 */
#pragma once

#include "common/transaction.h"

#include <array>
#include <span>
#include <string_view>

/** What a parameter is. The first three are names: of the account that the command is about, the
 * e-mail address, which becomes an account's name, and the peer-to-peer or remote-access user. */
enum class Parameter : unsigned char {
    None,
    User,
    Email,
    P2pUser,
    Pair,
    Token,
    Expiry
};

#ifdef SYSCMD_STRICT

inline constexpr bool STRICT = true;

/** An operation's parameters, the first, second, …, None behind the last. */
using Parameters = std::array<Parameter, 4>;

/** A thousand bytes of a text, control characters as "\x0a". */
std::array<char, 1024> escaped(const char* text);
/** A text as the log shows it. */
#define LOGGED(text) escaped(text).data()

#else

inline constexpr bool STRICT = false;

/** Nothing is kept of an operation's parameters. */
struct Parameters {
    template<typename... Any> constexpr Parameters(Any... /*parameters*/) {}
};

#define LOGGED(text) (text)

#endif

/**
 * Whether a parameter may hold a value, a view of a NUL-terminated text:
 *  - a name up to 254 bytes of UTF-8 that stays UTF-8 when it is cut to MAX_USERNAME_LENGTH,
 *    without control characters and "$&/:<>\`, neither "." nor ".." nor with a dash in front;
 *  - a pair up to 512 bytes of Base64, of letters, digits and $./:=, alone;
 *  - a token 1 to 200 letters, digits and +-=_~;
 *  - an expiry digits.
 * All but the token may be empty.
 */
bool mayHold(Parameter parameter, std::string_view value);

/**
 * Checks the parameters of a command that is to be carried out, and that a member names no account
 * but his own.
 *
 * @param values  its parameters, the first, second, …
 * @return whether it may go on; the reason why not is logged, without the value
 */
bool checkParameters(const ITransaction& tx, std::span<const std::string> values);
