#include "devkit/broker/state/device_state.h"

#include "devkit/boxwelld/files.h"
#include "tools/between.h"

#include <fcntl.h>
#include <glib.h>
#include <grp.h>
#include <linux/fs.h>
#include <pwd.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

constexpr char OWNER_FILE[] = "/opt/skyhold/etc/registration.conf";
constexpr char UPGRADE_FLAG[] = "/opt/skyhold/etc/.sso_upgraded";
constexpr char SESSIONS[] = "/opt/skyhold/etc/local_sessions";
constexpr char SHARED_MEMORY[] = "/dev/shm";
constexpr char DAEMON_SOCKET[] = "/run/boxwelld.sock";
/** Ids of people: above them is nobody (65534). */
constexpr uid_t FIRST_PERSON = 1001;
constexpr uid_t LAST_PERSON = 65533;

using Text = std::unique_ptr<char, decltype(&g_free)>;

/** What a tool of the device prints; nothing when it does not end with status 0. */
std::optional<std::string> output_of(const std::string& command_line)
{
    char* output = nullptr;
    int status = 0;
    const bool ran =
        g_spawn_command_line_sync(command_line.c_str(), &output, nullptr, &status, nullptr) !=
        FALSE;
    const Text owner(output, g_free);
    if (!ran || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        return std::nullopt;
    }
    return output;
}

std::optional<std::string> text_of_file(const std::string& path)
{
    char* text = nullptr;
    gsize length = 0;
    if (g_file_get_contents(path.c_str(), &text, &length, nullptr) == FALSE) {
        return std::nullopt;
    }
    const Text owner(text, g_free);
    return std::string(text, length);
}

bool daemon_answers()
{
    const Fd client(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    sockaddr_un address = {.sun_family = AF_UNIX, .sun_path = {}};
    std::copy(std::begin(DAEMON_SOCKET), std::end(DAEMON_SOCKET), address.sun_path);
    return connect(client.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

void read_daemon(DeviceState& state)
{
    const auto text = output_of("boxwelld show --json");
    if (!text) {
        throw std::runtime_error("boxwelld show --json failed: the daemon's accounts cannot be read"
        );
    }
    const Json daemon = Json::parse(*text);
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
    std::map<gid_t, std::string> names;
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
    setpwent();
    while (const passwd* entry = getpwent()) {
        if (entry->pw_uid < FIRST_PERSON || entry->pw_uid > LAST_PERSON) {
            continue;
        }
        const auto name = groups.names.find(entry->pw_gid);
        accounts.push_back(
            {entry->pw_uid, entry->pw_name,
             name != groups.names.end() ? name->second : std::to_string(entry->pw_gid),
             groups.lists[entry->pw_name]}
        );
    }
    endpwent();
    return accounts;
}

bool is_pinned(const fs::path& record)
{
    const Fd file(open(record.c_str(), O_RDONLY | O_CLOEXEC));
    int flags = 0;
    return ioctl(file.get(), FS_IOC_GETFLAGS, &flags) == 0 && (flags & FS_IMMUTABLE_FL) != 0;
}

std::vector<SessionRecord> read_sessions()
{
    std::vector<SessionRecord> sessions;
    std::error_code none; // no directory yet
    for (const auto& entry : fs::directory_iterator(SESSIONS, none)) {
        struct stat status = {};
        if (lstat(entry.path().c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
            continue;
        }
        const std::string token = entry.path().filename();
        sessions.push_back(
            {token, text_of_file(entry.path()).value_or(""), time(nullptr) - status.st_mtime,
             is_pinned(entry.path()), fs::exists(fs::path(SHARED_MEMORY) / token)}
        );
    }
    std::sort(sessions.begin(), sessions.end(), [](const auto& one, const auto& other) {
        return one.token < other.token;
    });
    return sessions;
}

std::optional<OwnerFile> read_owner_file()
{
    const auto text = text_of_file(OWNER_FILE);
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
    state.upgraded = fs::exists(UPGRADE_FLAG);
    state.sessions = read_sessions();
    for (const char* key : {"Model", "Firmware_Version", "Firmware_Time", "Serial"}) {
        const std::string output = output_of(std::string("boxwellinfo ") + key).value_or("");
        state.information.emplace_back(key, output.substr(0, output.find('\n')));
    }
    return state;
}
