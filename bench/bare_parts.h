/**
 * What the floors of operations are made of: each part has the effects that the plug-in's routine
 * must have, and hands over as newly allocated texts those that its contract names; nothing else.
 */
#pragma once

#include "bench/bare_log.h"
#include "bench/results.h"

#include <string>
#include <string_view>

/** What lies between two marks, from the first `begin` on; both are there. */
std::string_view between(const char* text, std::string_view begin, std::string_view end);

Text copyOf(std::string_view text);

/** Formats a request, once, into an exact allocation. */
[[gnu::format(printf, 1, 2)]] Text format(const char* form, ...);

/** One call of the client library. */
Text send(const Text& request);

/** Whether the reply's status is success. The status is handed over as a copy: that there is no
 * memory for it is a failure of its own, with a statement of its own. */
bool succeeded(const Text& reply);

/** One user of the daemon's: the texts that a query hands over. */
struct BareUser {
    Text id;
    Text group;
    Text email;
};

/** The query: the records walked once from front to back, to the one that matches. */
BareUser queryUser(const char* username);

/** Decodes Base64 into one allocation. */
Text decode(const std::string& base64);

/** The owner file: one allocation. */
Text readOwnerFile();

/** The owner's name: the file read, one copy. */
Text ownerName();

/** An account's number from the system: the look-up's buffer and the text. */
Text systemId(const char* username);

/** Whether the daemon does not lock the user and the system has it in the cloud group, as primary.
 */
bool isMember(const char* login);
