#include "bench/bare_sessions.h"

#include "bench/bare_log.h"
#include "syscmd/local_sessions.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <ctime>

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

} // namespace

Swept bareSweep(const char* pin_owner)
{
    Swept swept;
    DIR* records = opendir(LOCAL_SESSION_DIRECTORY);
    if (records == nullptr) {
        return swept;
    }
    const int directory = dirfd(records);
    const time_t now = time(nullptr);
    while (const dirent* entry = readdir(records)) {
        if (entry->d_type != DT_REG) {
            continue;
        }
        ++swept.seen;
        struct stat status = {};
        if (pin_owner != nullptr && belongsTo(directory, entry->d_name, pin_owner)) {
            std::abort();
        }
        fstatat(directory, entry->d_name, &status, 0);
        if (now - status.st_mtime > 86400) {
            ++swept.removed;
            removeRecord(directory, entry->d_name, status.st_mtime, now);
        }
    }
    closedir(records);
    return swept;
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
