#include "devkit/broker/replay/stage.h"

#include "devkit/boxwelld/files.h"
#include "devkit/broker/device.h"
#include "devkit/broker/record/device_state.h"
#include "devkit/recording/characters.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

constexpr time_t TWO_DAYS = 2 * device::SESSION_SECONDS;

/** The form that `boxwelld seed` takes. */
json daemon_state(const Facts& facts)
{
    json state = {
        {"groups", json::array()}, {"accounts", json::array()}, {"remote_users", json::array()}};
    for (const auto& [name, value] : facts) {
        const auto& [what, key] = name;
        if (what == "group") {
            state["groups"].push_back({{"name", key}, {"id", value}});
        } else if (what == "account") {
            json account = value;
            account["id"] = std::stoll(key);
            state["accounts"].push_back(account);
        } else if (what == "remote user") {
            state["remote_users"].push_back({{"name", key}, {"full_name", value}});
        } else if (what == "cloud owner") {
            state["cloud_owner"] = value;
        }
    }
    return state;
}

void seed_daemon(const Facts& facts)
{
    const std::string state = daemon_state(facts).dump();
    FILE* pipe = popen("boxwelld seed -", "w");
    if (pipe == nullptr) {
        throw std::runtime_error("boxwelld cannot be started to set the recorded state");
    }
    std::fwrite(state.data(), 1, state.size(), pipe);
    if (pclose(pipe) != 0) {
        throw std::runtime_error("boxwelld does not take the recorded state");
    }
}

void write_file(const std::string& path, const std::string& content)
{
    std::ofstream file(path);
    file << content << std::flush;
    if (!file) {
        throw std::runtime_error("cannot write " + path);
    }
}

/** The inode flags (ioctl_iflags(2)), where the file system has them. */
void set_flags(const std::string& path, int flags)
{
    const Fd file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    ioctl(file.get(), FS_IOC_SETFLAGS, &flags);
}

void clear_sessions()
{
    std::error_code none;
    for (const auto& entry : fs::directory_iterator(device::LOCAL_SESSIONS, none)) {
        set_flags(entry.path(), 0);
    }
    fs::remove_all(device::LOCAL_SESSIONS);
}

void add_session(const std::string& token, const json& session)
{
    if (token.find('/') != std::string::npos) {
        return; // none that the device's state could have told
    }
    fs::create_directory(device::LOCAL_SESSIONS);
    const std::string path = std::string(device::LOCAL_SESSIONS) + '/' + token;
    write_file(path, as_bytes(session.value("user", "")));
    chmod(path.c_str(), static_cast<mode_t>(std::stoul(session.value("mode", "4"))));
    const time_t written = time(nullptr) - (session.value("expired", false) ? TWO_DAYS : 0);
    const timespec times[] = {{written, 0}, {written, 0}};
    utimensat(AT_FDCWD, path.c_str(), times, 0);
    if (session.value("pinned", false)) {
        set_flags(path, FS_IMMUTABLE_FL);
    }
}

} // namespace

void set_stage(const Facts& facts)
{
    seed_daemon(facts);
    clear_sessions();
    fs::remove(device::OWNER_FILE);
    fs::remove(device::UPGRADE_FLAG);
    fs::remove(EVENTS_FILE);
    for (const auto& [name, value] : facts) {
        const auto& [what, key] = name;
        if (what == "owner file") {
            write_file(device::OWNER_FILE, as_bytes(value.get<std::string>()));
        } else if (what == "flag") {
            write_file(device::UPGRADE_FLAG, "");
        } else if (what == "session") {
            add_session(as_bytes(key), value);
        }
    }
}
