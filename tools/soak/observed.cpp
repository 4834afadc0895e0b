#include "tools/soak/observed.h"

#include "tools/soak/texts.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <sstream>

namespace fs = std::filesystem;

namespace {

constexpr char SETTINGS[] = "/opt/skyhold/etc";
constexpr char SESSIONS[] = "/opt/skyhold/etc/local_sessions";
constexpr char SHARED[] = "/dev/shm";
/** Later than the plug-in's clock ever is here: the machine has written it. */
constexpr time_t MACHINE_TIME = 1'500'000'000;

int flags_of(int file)
{
    int flags = 0;
    return ioctl(file, FS_IOC_GETFLAGS, &flags) == 0 ? flags : 0;
}

bool set_flags(int file, int flags)
{
    return ioctl(file, FS_IOC_SETFLAGS, &flags) == 0;
}

/** Dates a record, pinned or not. */
void date(const Fd& file, time_t when)
{
    const int flags = flags_of(file.get());
    const bool pinned = (flags & FS_IMMUTABLE_FL) != 0;
    const timespec times[] = {{when, 0}, {when, 0}};
    if ((pinned && !set_flags(file.get(), 0)) || futimens(file.get(), times) != 0 ||
        (pinned && !set_flags(file.get(), flags))) {
        throw_errno("dating a record");
    }
}

Session session_at(const fs::path& path, time_t now)
{
    const Fd file = open_file(path, O_RDONLY);
    struct stat status = {};
    if (fstat(file.get(), &status) != 0) {
        throw_errno(path);
    }
    if (status.st_mtime > MACHINE_TIME) {
        date(file, now);
        status.st_mtime = now;
    }
    return {
        read_all(file, path), status.st_mtime, (flags_of(file.get()) & FS_IMMUTABLE_FL) != 0,
        status.st_mode & 07777};
}

std::optional<std::string> text_at(const char* path)
{
    return fs::exists(path) ? std::optional(read_text(path)) : std::nullopt;
}

using Lines = std::multiset<std::string>;

/** The lines of passwd or group: all but the daemon's remarks and the comments between them, or all
 * outside of these. */
Lines lines_of(const std::string& path, bool foreign_only)
{
    std::istringstream text(read_text(path));
    Lines lines;
    bool own = false;
    for (std::string line; std::getline(text, line);) {
        if (line.starts_with("# boxwelld: ")) {
            own = !own;
        } else if (!own || (!foreign_only && !line.starts_with('#'))) {
            lines.insert(line);
        }
    }
    return lines;
}

Lines user_lines(const State& state, const World& world)
{
    std::map<std::string, std::int64_t> ids;
    for (const Group& group : world.groups) {
        ids[group.name] = group.id;
    }
    Lines lines = world.foreign_users;
    for (const auto& [id, account] : state.accounts) {
        lines.insert(
            account.name + ":x:" + std::to_string(id) + ':' + std::to_string(ids[account.group]) +
            "::/home/" + account.name + ":/bin/false"
        );
    }
    return lines;
}

Lines group_lines(const State& state, const World& world)
{
    Lines lines = world.foreign_groups;
    for (const Group& group : world.groups) {
        std::set<std::string> members;
        for (const auto& [id, account] : state.accounts) {
            for (const std::string& name : account.member_of) {
                members.insert(name == group.name ? account.name : "");
            }
        }
        members.erase("");
        std::string list;
        for (const std::string& member : members) {
            list += (list.empty() ? "" : ",") + member;
        }
        lines.insert(group.name + ":x:" + std::to_string(group.id) + ':' + list);
    }
    return lines;
}

std::string element(const char* name, const char* key)
{
    std::string value = read_text(std::string("/var/lib/device/info/") + key);
    value.erase(value.find_last_not_of('\n') + 1);
    return '<' + std::string(name) + '>' + value + "</" + name + '>';
}

bool can_pin()
{
    const std::string path = std::string(SETTINGS) + "/.probe";
    const Fd file = open_file(path, O_RDWR | O_CREAT);
    const bool can = set_flags(file.get(), FS_IMMUTABLE_FL) && set_flags(file.get(), 0);
    unlink(path.c_str());
    return can;
}

} // namespace

World explored_world(Store& store)
{
    World world;
    world.can_pin = can_pin();
    world.groups = store.groups();
    world.foreign_users = lines_of(PATHS.passwd, true);
    world.foreign_groups = lines_of(PATHS.group, true);
    for (const std::string& line : world.foreign_users) {
        world.system_users[line.substr(0, line.find(':'))] =
            std::stoll(line.substr(line.find(":x:") + 3));
    }
    world.elements = element("model", "Model") + element("firmware_id", "Firmware_Version") +
                     element("firmware_time", "Firmware_Time") + element("serial", "Serial") +
                     "<link_agent_id>LA-7C41-D09A</link_agent_id>";
    return world;
}

State observed_state(Store& store, time_t now)
{
    State state;
    for (const Account& account : store.accounts()) {
        state.accounts[account.id] = account;
    }
    state.last_id =
        store.database().execAndGet("SELECT seq FROM sqlite_sequence WHERE name = 'accounts'");
    for (const RemoteUser& user : store.remote_users()) {
        state.remote_users.insert(user.name);
    }
    state.cloud_owner = store.cloud_owner();
    state.owner_file = text_at(OWNER_FILE_PATH);
    state.upgraded = fs::exists(UPGRADE_FLAG_PATH);
    struct stat status = {};
    if (stat(SESSIONS, &status) == 0) {
        state.directory = status.st_mode & 07777U;
        for (const auto& entry : fs::directory_iterator(SESSIONS)) {
            state.sessions[entry.path().filename()] = session_at(entry.path(), now);
        }
    }
    for (const auto& entry : fs::directory_iterator(SHARED)) {
        state.shared.insert(entry.path().filename());
    }
    state.log_file = fs::exists(LOG_FILE_PATH);
    return state;
}

std::string wrong_account_files(const State& state, const World& world)
{
    if (lines_of(PATHS.passwd, false) != user_lines(state, world)) {
        return PATHS.passwd + " differs:\n" + read_text(PATHS.passwd);
    }
    if (lines_of(PATHS.group, false) != group_lines(state, world)) {
        return PATHS.group + " differs:\n" + read_text(PATHS.group);
    }
    return "";
}

std::size_t lasting_files()
{
    std::size_t count = 0;
    for (const char* root : {"/opt", "/var/lib", "/var/log", "/run"}) {
        for (auto at = fs::recursive_directory_iterator(root); at != end(at); ++at) {
            const std::string path = at->path();
            if (path == "/run/log" || path == SESSIONS) {
                at.disable_recursion_pending();
            }
            const bool passing = path == OWNER_FILE_PATH || path == LOG_FILE_PATH ||
                                 path == UPGRADE_FLAG_PATH || path == SESSIONS ||
                                 path.ends_with("-journal");
            count += passing ? 0 : 1;
        }
    }
    return count;
}

std::size_t descriptors(const std::string& process)
{
    const fs::directory_iterator open("/proc/" + process + "/fd");
    return static_cast<std::size_t>(std::distance(begin(open), end(open)));
}

std::size_t resident(const std::string& process)
{
    std::istringstream numbers(read_text("/proc/" + process + "/statm"));
    std::size_t total = 0;
    std::size_t pages = 0;
    numbers >> total >> pages;
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / 1024;
}
