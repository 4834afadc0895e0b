#include "bench/bare_sessions.h"

#include "bench/bare_log.h"
#include "syscmd/sessions/record.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <vector>

namespace {

/** Whether the record's first line is the user's; in the bench it never is. */
bool belongsTo(int directory, const char* name, const char* user)
{
    const int fd = openat(directory, name, O_RDONLY | O_CLOEXEC);
    char line[256];
    const ssize_t got = read(fd, line, sizeof line - 1);
    close(fd);
    return got > 0 && std::strlen(user) == static_cast<std::size_t>(got) &&
           std::strncmp(line, user, static_cast<std::size_t>(got)) == 0;
}

void removeRecord(int directory, const char* name, time_t modified, time_t now)
{
    BARE_INFO(
        "[CleanupObsoleteLocalSessions] REMOVE file %s timestamp %lld [curtime %lld]\n", name,
        static_cast<long long>(modified), static_cast<long long>(now)
    );
    unlinkat(directory, name, 0);
    char object[1 + NAME_MAX + 1] = "/";
    std::strcpy(object + 1, name);
    shm_unlink(object);
}

/** Names of the regular files, sorted as the sweep sorts them. */
std::vector<std::string> sortedNames(DIR* records)
{
    std::vector<std::string> names;
    while (const dirent* entry = readdir(records)) {
        if (entry->d_type == DT_REG) {
            names.emplace_back(entry->d_name);
        }
    }
    std::sort(names.begin(), names.end(), [](const std::string& one, const std::string& other) {
        return std::strcoll(one.c_str(), other.c_str()) < 0;
    });
    return names;
}

} // namespace

void bareSweep(const char* pin_owner)
{
    DIR* records = opendir(LOCAL_SESSION_DIRECTORY);
    if (records == nullptr) {
        return;
    }
    const int directory = dirfd(records);
    const std::vector<std::string> names = sortedNames(records);
    const time_t now = time(nullptr);
    for (const std::string& name : names) {
        struct stat status = {};
        if (pin_owner != nullptr && belongsTo(directory, name.c_str(), pin_owner)) {
            std::abort();
        }
        fstatat(directory, name.c_str(), &status, 0);
        if (now - status.st_mtime > 86400) {
            removeRecord(directory, name.c_str(), status.st_mtime, now);
        }
    }
    closedir(records);
}

void bareRecord(const std::string& token, const std::string& username)
{
    char path[256];
    std::snprintf(path, sizeof path, "%s/%s", LOCAL_SESSION_DIRECTORY, token.c_str());
    const int fd = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (write(fd, username.data(), username.size()) < 0) {
        std::perror(path);
    }
    fchmod(fd, 0004);
    close(fd);
}
