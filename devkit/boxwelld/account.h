/** What the daemon keeps about accounts, and the refusal that every part of it may throw. */
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

struct Account {
    std::int64_t id = 0;
    std::string name;
    std::string group; // the primary group
    bool locked = false;
    std::string email;
    std::string smb_hash;
    std::string sys_hash;
    std::string p2p_user_name;
    std::vector<std::string> member_of; // further groups

    bool operator==(const Account&) const = default;
};

/** What a request says about an account: what it leaves out is empty (new) or stays (existing). */
struct AccountFields {
    std::optional<std::string> name;
    std::optional<std::string> group;
    std::optional<bool> locked;
    std::optional<std::string> email;
    std::optional<std::string> smb_hash;
    std::optional<std::string> sys_hash;
    std::optional<std::string> p2p_user_name;
};

struct Group {
    std::int64_t id = 0;
    std::string name;
};

struct RemoteUser {
    std::string name;
    std::string full_name;
};

/** A request, a seed or an order that is not carried out; the text tells why. */
class Refusal : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};
