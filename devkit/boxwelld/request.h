/** The requests that the daemon understands. */
#pragma once

#include "devkit/boxwelld/account.h"
#include "devkit/boxwelld/store.h"

#include <string>
#include <variant>

/** What a reply repeats of its request; as much of it as could be read. */
struct Envelope {
    std::string schema; // address of the transaction schema
    std::string source;
    std::string transaction_id;
    std::string operation_id;
};

struct QueryAccounts {
    Property property;
    Match match;
    std::string value;
};
struct AddAccount {
    AccountFields fields;
};
struct SetAccount {
    std::int64_t id;
    AccountFields fields;
};
struct DeleteAccount {
    std::int64_t id;
};
struct AddRemoteUser {
    RemoteUser user;
};
struct DeleteRemoteUser {
    std::string name;
};
struct SetCloudOwner {
    std::string name;
};
using Request = std::variant<
    QueryAccounts,
    AddAccount,
    SetAccount,
    DeleteAccount,
    AddRemoteUser,
    DeleteRemoteUser,
    SetCloudOwner>;

/**
 * Reads a request's text, with or without an `Authorization: NAME` line ahead of it.
 *
 * @param envelope  filled in as far as reading came, also where the request is refused
 * @throw Refusal   the text is not well-formed, or asks for something that is not known
 */
Request read_request(const std::string& text, Envelope& envelope);
