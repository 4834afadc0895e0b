#include "syscmd/local_sessions.h"

#include "common/common.h"
#include "common/io.h"
#include "liblst/owned.h"
#include "syscmd/inode_flags.h"

#include <dirent.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <ctime>

namespace {

constexpr double LIFETIME_SECONDS = 86400.0;
constexpr mode_t DIRECTORY_MODE = 0005;
constexpr mode_t RECORD_MODE = 0004;
/** Longest path of a new record, with its NUL. */
constexpr std::size_t RECORD_PATH_SIZE = 256;
constexpr const char* PINNED = "0";

/** A directory's list, as scandir(3) allocates it. */
struct Listing {
    dirent** entries;
    int count;
};

void releaseListing(Listing* listing)
{
    for (int i = 0; i < listing->count; ++i) {
        free(listing->entries[i]);
    }
    free(listing->entries);
}

bool directoryIsMissing()
{
    struct stat status = {};
    return stat(LOCAL_SESSION_DIRECTORY, &status) != 0 && errno == ENOENT;
}

/** Clears all flags of an open record that is pinned; `name` is for the log. */
void unpin(FILE* record, const char* name)
{
    static constexpr const char* FUNCTION = "CleanupObsoleteLocalSessions";
    ErrorText text = {};
    std::uint32_t flags = 0;
    if (getInodeFlags(fileno(record), &flags) == -1) {
        LOG_IN(
            FUNCTION, __LINE__, Error,
            "[CleanupObsoleteLocalSessions] ioctl is unable to read flags for file %s: %s\n", name,
            errorText(text, errno)
        );
    }
    if ((flags & FS_IMMUTABLE_FL) == 0) {
        return;
    }

    LOG_IN(
        FUNCTION, __LINE__, Debug,
        "[CleanupObsoleteLocalSessions] reset immutable flag on file %s\n", name
    );
    if (setInodeFlags(fileno(record), 0) != SUCCESS) {
        LOG_IN(
            FUNCTION, __LINE__, Error, "[CleanupObsoleteLocalSessions]  ioctl failed on %s: %s\n",
            name, errorText(text, errno)
        );
    }
}

/** Unpins the record if it is the user's. */
void unpinIfOwned(const char* path, const char* name, const char* owner)
{
    AUTO_CLOSE_FILE FILE* record = fopen(path, "re");
    if (record == nullptr) {
        return;
    }
    char line[256];
    if (readline(line, sizeof line, record) != SUCCESS) {
        LOG_IN(
            "CleanupObsoleteLocalSessions", __LINE__, Error,
            "[CleanupObsoleteLocalSessions] Unable to read username from file %s \n", name
        );
    } else if (strcmp(line, owner) == 0) {
        unpin(record, name);
    }
}

void removeIfExpired(const char* path, const char* name, time_t now)
{
    struct stat status = {};
    if (stat(path, &status) != 0 || difftime(now, status.st_mtime) <= LIFETIME_SECONDS) {
        return;
    }

    LOG_IN(
        "CleanupObsoleteLocalSessions", __LINE__, Info,
        "[CleanupObsoleteLocalSessions] REMOVE file %s timestamp %lld [curtime %lld]\n", name,
        static_cast<long long>(status.st_mtime), static_cast<long long>(now)
    );
    if (unlink(path) != 0) {
        return; // pinned, or another sweep was faster
    }
    char object[1 + NAME_MAX + 1];
    snprintf(object, sizeof object, "/%s", name);
    shm_unlink(object);
}

/** Pins an open record; the attribute comes before the content, which is still in the buffer. */
void pin(FILE* record, const char* path)
{
    static constexpr const char* FUNCTION = "UpdateLocalSessionRecords";
    LOG_IN(
        FUNCTION, __LINE__, Debug, "[CleanupObsoleteLocalSessions] set immutable flag on file %s\n",
        path
    );
    if (setInodeFlags(fileno(record), FS_IMMUTABLE_FL) != SUCCESS) {
        ErrorText text = {};
        LOG_IN(
            FUNCTION, __LINE__, Error, "[UpdateLocalSessionRecords]  ioctl failed on %s: %s\n",
            path, errorText(text, errno)
        );
    }
}

} // namespace

int CleanupObsoleteLocalSessions(const char* immutableOwner)
{
    if (directoryIsMissing()) {
        return SUCCESS;
    }

    [[gnu::cleanup(releaseListing)]] Listing listing = {nullptr, 0};
    listing.count = scandir(LOCAL_SESSION_DIRECTORY, &listing.entries, nullptr, alphasort);
    if (listing.count < 0) {
        return -1;
    }

    const time_t now = time(nullptr);
    for (int i = 0; i < listing.count; ++i) {
        const dirent& entry = *listing.entries[i];
        if (entry.d_type != DT_REG) {
            continue;
        }
        char path[sizeof LOCAL_SESSION_DIRECTORY + 1 + NAME_MAX];
        snprintf(path, sizeof path, "%s/%s", LOCAL_SESSION_DIRECTORY, entry.d_name);
        if (immutableOwner != nullptr) {
            unpinIfOwned(path, entry.d_name, immutableOwner);
        }
        removeIfExpired(path, entry.d_name, now);
    }
    return SUCCESS;
}

int UpdateLocalSessionRecords(const char* token, const char* username, const char* expires)
{
    if (token == nullptr || username == nullptr || expires == nullptr) {
        LOG(Error, "ERROR [syscmd:UpdateLocalSessionRecords] invalid input arguments\n");
        return -1;
    }
    if (directoryIsMissing() && mkdir(LOCAL_SESSION_DIRECTORY, DIRECTORY_MODE) != 0) {
        LOG(Error, "[UpdateLocalSessionRecords] mkdir %s failed; errno=%d\n",
            LOCAL_SESSION_DIRECTORY, errno);
        return -1;
    }
    char path[RECORD_PATH_SIZE];
    const int length = snprintf(path, sizeof path, "%s/%s", LOCAL_SESSION_DIRECTORY, token);
    if (length < 0 || static_cast<std::size_t>(length) >= sizeof path) {
        return -1;
    }

    {
        AUTO_CLOSE_FILE FILE* record = fopen(path, "we");
        if (record == nullptr) {
            return -1;
        }
        fputs(username, record);
        if (strcmp(expires, PINNED) == 0) {
            pin(record, path);
        }
    }
    chmod(path, RECORD_MODE); // refused for a pinned record, which keeps the mode of its creation
    return SUCCESS;
}
