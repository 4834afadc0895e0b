#include "devkit/broker/state/device_state.h"

#include "devkit/boxwelld/files.h"
#include "devkit/broker/device.h"
#include "tools/between.h"

#include <grp.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

constexpr char SHARED_MEMORY[] = "/dev/shm";
constexpr char DAEMON_SOCKET[] = "/run/boxwelld.sock";

bool daemon_answers()
{
    const Fd client(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    sockaddr_un address = {.sun_family = AF_UNIX, .sun_path = {}};
    std::copy(std::begin(DAEMON_SOCKET), std::end(DAEMON_SOCKET), address.sun_path);
    return connect(client.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

void read_daemon(DeviceState& state)
{
    const Json daemon = device::daemon_state();
    if (daemon.is_null()) {
        throw std::runtime_error("boxwelld show --json failed: the daemon's accounts cannot be read"
        );
    }
    for (const Json& account : daemon["accounts"]) {
        state.daemon_accounts.push_back(
            {account["id"], account["name"], account["group"], account["locked"], account["email"],
             account["p2p_user_name"], account["member_of"]}
        );
    }
    for (const Json& user : daemon["remote_users"]) {
        state.remote_users.push_back(user["name"]);
    }
    state.cloud_owner = daemon["cloud_owner"];
}

/** The groups' names by their numbers, and those that each user is listed in. */
struct Groups {
    std::map<std::int64_t, std::string> names;
    std::map<std::string, std::vector<std::string>> lists;
};

Groups read_groups()
{
    Groups groups;
    setgrent();
    while (const group* entry = getgrent()) {
        groups.names[entry->gr_gid] = entry->gr_name;
        for (char** member = entry->gr_mem; *member != nullptr; ++member) {
            groups.lists[*member].emplace_back(entry->gr_name);
        }
    }
    endgrent();
    return groups;
}

std::vector<SystemAccount> read_system()
{
    Groups groups = read_groups();
    std::vector<SystemAccount> accounts;
    for (const device::Person& person : device::people()) {
        const auto name = groups.names.find(person.group);
        accounts.push_back(
            {person.id, person.name,
             name != groups.names.end() ? name->second : std::to_string(person.group),
             groups.lists[person.name]}
        );
    }
    return accounts;
}

std::vector<SessionRecord> read_sessions()
{
    std::vector<SessionRecord> sessions;
    for (const device::Session& session : device::sessions()) {
        sessions.push_back(
            {session.token, session.user, session.age, session.pinned,
             fs::exists(fs::path(SHARED_MEMORY) / session.token)}
        );
    }
    return sessions;
}

std::optional<OwnerFile> read_owner_file()
{
    const auto text = device::text_of(device::OWNER_FILE);
    if (!text) {
        return std::nullopt;
    }
    return OwnerFile{
        between(*text, "<owner>", "</owner>"), between(*text, "<p2powner>", "</p2powner>")};
}

} // namespace

DeviceState read_device_state()
{
    DeviceState state;
    state.daemon_answers = daemon_answers();
    read_daemon(state);
    state.system_accounts = read_system();
    state.owner_file = read_owner_file();
    state.upgraded = fs::exists(device::UPGRADE_FLAG);
    state.sessions = read_sessions();
    for (const char* key : {"Model", "Firmware_Version", "Firmware_Time", "Serial"}) {
        const std::string output = device::output_of({"boxwellinfo", key}).value_or("");
        state.information.emplace_back(key, output.substr(0, output.find('\n')));
    }
    return state;
}
