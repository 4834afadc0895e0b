#include "bench/bare_sessions.h"

#include "bench/bare_log.h"
#include "syscmd/sessions/record.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace {

/** Whether the record's first line is the user's; in the bench it never is. */
bool belongsTo(int directory, const char* name, const char* user)
{
    const int fd = openat(directory, name, O_RDONLY | O_CLOEXEC);
    char line[256];
    std::size_t length = 0;
    ssize_t got = 0;
    do { // to the end: a read may give less than there is
        got = read(fd, line + length, sizeof line - length);
        length += got > 0 ? static_cast<std::size_t>(got) : 0;
    } while (got > 0 && length < sizeof line);
    close(fd);
    return std::strlen(user) == length && std::strncmp(line, user, length) == 0;
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

int isRegular(const dirent* entry)
{
    return entry->d_type == DT_REG ? 1 : 0;
}

} // namespace

void bareSweep(const char* pin_owner)
{
    const int directory = open(LOCAL_SESSION_DIRECTORY, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory < 0) {
        return;
    }
    dirent** records = nullptr;
    const int count = scandirat(directory, ".", &records, isRegular, alphasort);
    const time_t now = time(nullptr);
    for (int i = 0; i < count; ++i) {
        const char* name = records[i]->d_name;
        struct stat status = {};
        if (pin_owner != nullptr && belongsTo(directory, name, pin_owner)) {
            std::abort();
        }
        fstatat(directory, name, &status, 0);
        if (now - status.st_mtime > 86400) {
            removeRecord(directory, name, status.st_mtime, now);
        }
        std::free(records[i]);
    }
    std::free(records);
    close(directory);
}

void bareRecord(const std::string& token, const std::string& username)
{
    struct stat status = {};
    stat(LOCAL_SESSION_DIRECTORY, &status);
    char path[256];
    std::snprintf(path, sizeof path, "%s/%s", LOCAL_SESSION_DIRECTORY, token.c_str());
    const int fd = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (write(fd, username.data(), username.size()) < 0) {
        std::perror(path);
    }
    fchmod(fd, 0004);
    close(fd);
}
