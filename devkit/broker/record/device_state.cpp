#include "devkit/broker/record/device_state.h"

#include "common/device/owner_file.h"
#include "common/device/upgrade_flag.h"
#include "devkit/recording/characters.h"
#include "syscmd/sessions/inode_flags.h"
#include "syscmd/sessions/record.h"

#include <fcntl.h>
#include <glib.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

constexpr time_t SESSION_SECONDS = 86400;
constexpr uid_t FIRST_ACCOUNT = 1001;
constexpr uid_t NOBODY = 65534;

std::string content_of(const std::string& path)
{
    std::ifstream file(path);
    return as_characters({std::istreambuf_iterator<char>(file), {}});
}

/** What `boxwelld show --json` prints; null when there is no daemon's state. */
json daemon_state()
{
    const char* arguments[] = {"boxwelld", "show", "--json", nullptr};
    char* output = nullptr;
    const auto flags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDERR_TO_DEV_NULL);
    const gboolean done = g_spawn_sync(
        nullptr, const_cast<char**>(arguments), nullptr, flags, nullptr, nullptr, &output, nullptr,
        nullptr, nullptr
    );
    const std::unique_ptr<char, decltype(&g_free)> owner(output, g_free);
    const json state = json::parse(done == FALSE ? "" : output, nullptr, false);
    return state.is_object() ? state : json();
}

void add_daemon(Facts& facts)
{
    const json state = daemon_state();
    if (state.is_null()) {
        return;
    }
    for (const json& group : state["groups"]) {
        facts[{"group", group["name"]}] = group["id"];
    }
    for (json account : state["accounts"]) {
        const std::string id = account["id"].dump();
        account.erase("id");
        facts[{"account", id}] = account;
    }
    for (const json& user : state["remote_users"]) {
        facts[{"remote user", user["name"]}] = user["full_name"];
    }
    facts[{"cloud owner", ""}] = state["cloud_owner"];
}

void add_passwd(Facts& facts)
{
    setpwent();
    while (const passwd* entry = getpwent()) {
        if (entry->pw_uid >= FIRST_ACCOUNT && entry->pw_uid < NOBODY) {
            facts[{"passwd", as_characters(entry->pw_name)}] = as_characters(
                std::to_string(entry->pw_uid) + ':' + std::to_string(entry->pw_gid) + ':' +
                entry->pw_dir + ':' + entry->pw_shell
            );
        }
    }
    endpwent();
}

bool is_pinned(const std::string& path)
{
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    std::uint32_t flags = 0;
    getInodeFlags(fd, &flags);
    if (fd >= 0) {
        close(fd);
    }
    return (flags & FS_IMMUTABLE_FL) != 0;
}

void add_sessions(Facts& facts)
{
    std::error_code none;
    for (const auto& entry : fs::directory_iterator(LOCAL_SESSION_DIRECTORY, none)) {
        const std::string path = entry.path();
        struct stat status = {};
        if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
            continue;
        }
        facts[{"session", as_characters(entry.path().filename())}] = {
            {"user", content_of(path)},
            {"mode", std::to_string(status.st_mode & 0777U)},
            {"pinned", is_pinned(path)},
            {"expired", time(nullptr) - status.st_mtime > SESSION_SECONDS},
        };
    }
}

void add_events(Facts& facts)
{
    std::ifstream events(EVENTS_FILE);
    int number = 1;
    for (std::string line; std::getline(events, line); ++number) {
        const json arguments = json::parse(line, nullptr, false);
        if (arguments.is_array()) {
            facts[{"event", std::to_string(number)}] = arguments;
        }
    }
}

} // namespace

Facts device_state()
{
    Facts facts;
    add_daemon(facts);
    add_passwd(facts);
    add_sessions(facts);
    add_events(facts);
    if (fs::exists(OWNER_FILE)) {
        facts[{"owner file", ""}] = content_of(OWNER_FILE);
    }
    if (fs::exists(SSO_UPGRADE_FLAG)) {
        facts[{"flag", ".sso_upgraded"}] = true;
    }
    return facts;
}
