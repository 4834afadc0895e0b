#include "syscmd/sessions/sweep.h"

#include "common/error_text.h"
#include "common/log.h"
#include "common/readline.h"
#include "common/result.h"
#include "liblst/owned.h"
#include "syscmd/sessions/inode_flags.h"
#include "syscmd/sessions/record.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

namespace {

constexpr Speaker SWEEP = SPEAKER("CleanupObsoleteLocalSessions");

constexpr time_t LIFETIME_SECONDS = 86400;

/** A sorted list of records. */
struct Listing {
    dirent** entries;
    int count;
};

void releaseListing(const Listing* listing)
{
    for (int i = 0; i < listing->count; ++i) {
        free(listing->entries[i]);
    }
    free(listing->entries);
}

/** Whether an entry is a record: a regular file, whose name the C library has room for. */
int isRecord(const dirent* entry)
{
    return entry->d_type == DT_REG && strlen(entry->d_name) < sizeof entry->d_name ? 1 : 0;
}

/** Clears all flags of an open record that is pinned; `name` is for the log. */
void unpin(FILE* record, const char* name)
{
    ErrorText text = {};
    std::uint32_t flags = 0;
    if (getInodeFlags(fileno(record), &flags) == -1) {
        LOG_AS(
            SWEEP, Error, "[%s] ioctl is unable to read flags for file %s: %s\n", SWEEP.function,
            name, errorText(text, errno)
        );
    }
    if ((flags & FS_IMMUTABLE_FL) == 0) {
        return;
    }

    LOG_AS(SWEEP, Debug, "[%s] reset immutable flag on file %s\n", SWEEP.function, name);
    if (setInodeFlags(fileno(record), 0) != SUCCESS) {
        LOG_AS(
            SWEEP, Error, "[%s]  ioctl failed on %s: %s\n", SWEEP.function, name,
            errorText(text, errno)
        );
    }
}

/** Unpins the record if it is the user's. */
void unpinIfOwned(const char* name, const char* owner)
{
    char path[sizeof LOCAL_SESSION_DIRECTORY + sizeof dirent::d_name];
    snprintf(path, sizeof path, "%s/%s", LOCAL_SESSION_DIRECTORY, name);
    AUTO_CLOSE_FILE FILE* record = fopen(path, "re");
    if (record == nullptr) {
        return;
    }
    char buffer[256]; // without one of its own, the stream allocates a page for a name
    setvbuf(record, buffer, _IOFBF, sizeof buffer);
    char line[256];
    if (readline(line, sizeof line, record) != SUCCESS) {
        LOG_AS(SWEEP, Error, "[%s] Unable to read username from file %s \n", SWEEP.function, name);
    } else if (strcmp(line, owner) == 0) {
        unpin(record, name);
    }
}

/** Deletes the record if it has expired at `now`, and its shared-memory object. */
void removeIfExpired(int directory, const char* name, time_t now)
{
    struct stat status = {};
    if (fstatat(directory, name, &status, 0) != 0 || status.st_mtime >= now - LIFETIME_SECONDS) {
        return;
    }
    LOG_AS(
        SWEEP, Info, "[%s] REMOVE file %s timestamp %lld [curtime %lld]\n", SWEEP.function, name,
        static_cast<long long>(status.st_mtime), static_cast<long long>(now)
    );
    if (unlinkat(directory, name, 0) != 0) {
        return; // pinned, or another sweep was faster
    }
    char object[1 + sizeof dirent::d_name];
    snprintf(object, sizeof object, "/%s", name);
    shm_unlink(object);
}

} // namespace

int CleanupObsoleteLocalSessions(const char* immutableOwner)
{
    AUTO_CLOSE_FD const int directory =
        open(LOCAL_SESSION_DIRECTORY, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory < 0) {
        return errno == ENOENT ? SUCCESS : -1;
    }
    [[gnu::cleanup(releaseListing)]] Listing records = {};
    records.count = scandirat(directory, ".", &records.entries, isRecord, alphasort);
    if (records.count < 0) {
        return -1;
    }

    const time_t now = time(nullptr);
    for (int i = 0; i < records.count; ++i) {
        const char* name = records.entries[i]->d_name;
        if (immutableOwner != nullptr) {
            unpinIfOwned(name, immutableOwner);
        }
        removeIfExpired(directory, name, now);
    }
    return SUCCESS;
}
