#include "devkit/broker/device.h"

#include "devkit/boxwelld/files.h"

#include <fcntl.h>
#include <glib.h>
#include <linux/fs.h>
#include <pwd.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <memory>

namespace fs = std::filesystem;

namespace {

/** Ids of people: above them is nobody (65534). */
constexpr uid_t FIRST_PERSON = 1001;
constexpr uid_t LAST_PERSON = 65533;

using Text = std::unique_ptr<char, decltype(&g_free)>;

bool is_pinned(const fs::path& record)
{
    const Fd file(open(record.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    int flags = 0;
    return ioctl(file.get(), FS_IOC_GETFLAGS, &flags) == 0 && (flags & FS_IMMUTABLE_FL) != 0;
}

} // namespace

std::optional<std::string> device::text_of(const std::string& path)
{
    char* text = nullptr;
    gsize length = 0;
    if (g_file_get_contents(path.c_str(), &text, &length, nullptr) == FALSE) {
        return std::nullopt;
    }
    const Text owner(text, g_free);
    return std::string(text, length);
}

std::optional<std::string> device::output_of(const std::vector<std::string>& command)
{
    std::vector<const char*> arguments;
    std::transform(
        command.begin(), command.end(), std::back_inserter(arguments),
        [](const std::string& word) { return word.c_str(); }
    );
    arguments.push_back(nullptr);
    char* output = nullptr;
    int status = 0;
    const auto flags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDERR_TO_DEV_NULL);
    const bool ran = g_spawn_sync(
                         nullptr, const_cast<char**>(arguments.data()), nullptr, flags, nullptr,
                         nullptr, &output, nullptr, &status, nullptr
                     ) != FALSE;
    const Text owner(output, g_free);
    if (!ran || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        return std::nullopt;
    }
    return output;
}

nlohmann::json device::daemon_state()
{
    const auto state = nlohmann::json::parse(
        output_of({"boxwelld", "show", "--json"}).value_or(""), nullptr, false
    );
    return state.is_object() ? state : nlohmann::json();
}

std::vector<device::Person> device::people()
{
    std::vector<Person> all;
    setpwent();
    while (const passwd* entry = getpwent()) {
        if (entry->pw_uid >= FIRST_PERSON && entry->pw_uid <= LAST_PERSON) {
            all.push_back(
                {entry->pw_name, entry->pw_uid, entry->pw_gid, entry->pw_dir, entry->pw_shell}
            );
        }
    }
    endpwent();
    return all;
}

std::vector<device::Session> device::sessions()
{
    std::vector<Session> all;
    std::error_code none; // no directory yet
    for (const auto& entry : fs::directory_iterator(LOCAL_SESSIONS, none)) {
        struct stat status = {};
        if (lstat(entry.path().c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
            continue;
        }
        all.push_back(
            {entry.path().filename(), text_of(entry.path()).value_or(""),
             time(nullptr) - status.st_mtime, status.st_mode & 0777U, is_pinned(entry.path())}
        );
    }
    std::sort(all.begin(), all.end(), [](const Session& one, const Session& other) {
        return one.token < other.token;
    });
    return all;
}
