/** The state of a device, as its files and tools tell it. */
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

/** An account of the daemon's. */
struct DaemonAccount {
    std::int64_t id = 0;
    std::string name;
    std::string group; // the primary group
    bool locked = false;
    std::string email;
    std::string p2p_user_name;
    std::vector<std::string> member_of; // further groups
};

/** An account of a person in the system's user database. */
struct SystemAccount {
    std::int64_t id = 0;
    std::string name;
    std::string group;                  // the primary group, or its number where it has no name
    std::vector<std::string> member_of; // further groups
};

/** What the owner file says; an element that is missing is an empty text, as it is to the plug-in.
 */
struct OwnerFile {
    std::string owner;
    std::string p2p_owner;
};

struct SessionRecord {
    std::string token;
    std::string user;
    std::int64_t age = 0; // seconds since it was written
    bool pinned = false;
    bool shared_memory = false; // whether there is any of its name
};

struct DeviceState {
    bool daemon_answers = false;
    std::string cloud_owner; // the daemon's
    std::vector<DaemonAccount> daemon_accounts;
    std::vector<std::string> remote_users;
    std::vector<SystemAccount> system_accounts;
    std::optional<OwnerFile> owner_file;
    bool upgraded = false;                                        // to single sign-on, once
    std::vector<SessionRecord> sessions;                          // by token
    std::vector<std::pair<std::string, std::string>> information; // key and the tool's first line
};

/**
 * Reads the state of the device that the caller runs on.
 *
 * @throws std::runtime_error  when a tool or a file that must be there cannot be read
 */
DeviceState read_device_state();
