/** What the private device holds on which this runs, read from where it stands. */
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace device {

constexpr char OWNER_FILE[] = "/opt/skyhold/etc/registration.conf";
constexpr char UPGRADE_FLAG[] = "/opt/skyhold/etc/.sso_upgraded";
constexpr char LOCAL_SESSIONS[] = "/opt/skyhold/etc/local_sessions";
/** A session that is older is expired, in seconds. */
constexpr std::int64_t SESSION_SECONDS = 86'400;

/** The whole of a file; nothing when it cannot be read. */
std::optional<std::string> text_of(const std::string& path);

/** What a tool of the device prints; nothing when it does not end with status 0. */
std::optional<std::string> output_of(const std::vector<std::string>& command);

/** What `boxwelld show --json` prints; null when it fails. */
nlohmann::json daemon_state();

/** A person's entry in the system's user database. */
struct Person {
    std::string name;
    std::int64_t id;
    std::int64_t group;
    std::string home;
    std::string shell;
};

/** All of them, in the database's order. */
std::vector<Person> people();

/** A session's record. */
struct Session {
    std::string token;
    std::string user;
    std::int64_t age; // seconds since it was written
    unsigned mode;    // permissions
    bool pinned;
};

/** All of them, by token. */
std::vector<Session> sessions();

} // namespace device
