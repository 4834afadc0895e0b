#include "common/common.h"
#include "common/io.h"
#include "liblst/grow.h"
#include "liblst/owned.h"
#include "syscmd/sessions/inode_flags.h"
#include "syscmd/sessions/record.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <ctime>

namespace {

constexpr double LIFETIME_SECONDS = 86400.0;

/** A record that a sweep has to do something about. */
struct Finding {
    char* name;
    time_t modified;
    bool expired;
    bool maybe_pinned; // the user's, or unreadable
};

struct Findings {
    Finding* items;
    std::size_t count;
    std::size_t capacity;
};

void releaseFindings(Findings* findings)
{
    for (std::size_t i = 0; i < findings->count; ++i) {
        free(findings->items[i].name);
    }
    free(findings->items);
}

bool note(Findings* findings, const Finding& finding)
{
    constexpr std::size_t FIRST_CAPACITY = 64;
    if (findings->count == findings->capacity &&
        !growArray(findings->items, findings->capacity, FIRST_CAPACITY)) {
        return false;
    }
    char* name = strdup(finding.name);
    if (name == nullptr) {
        return false;
    }
    Finding& noted = findings->items[findings->count++];
    noted = finding;
    noted.name = name;
    return true;
}

/** The order of alphasort(3). */
int byName(const void* one, const void* other)
{
    return strcoll(
        static_cast<const Finding*>(one)->name, static_cast<const Finding*>(other)->name
    );
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
void unpinIfOwned(const char* name, const char* owner)
{
    char path[sizeof LOCAL_SESSION_DIRECTORY + 1 + NAME_MAX];
    snprintf(path, sizeof path, "%s/%s", LOCAL_SESSION_DIRECTORY, name);
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

/** Whether the record has to be opened again, in its turn: it is the owner's, or cannot be read. */
bool concerns(int directory, const char* name, const char* owner)
{
    AUTO_CLOSE_FD const int record = openat(directory, name, O_RDONLY | O_CLOEXEC);
    if (record < 0) {
        return false;
    }
    char line[256];
    const ssize_t got = read(record, line, sizeof line - 1);
    if (got <= 0) {
        return true;
    }
    line[got] = '\0';
    line[strcspn(line, "\r\n")] = '\0';
    return strcmp(line, owner) == 0;
}

/** Judges a record by the sweep's clock; what is to be done about it is noted. False: no memory. */
bool judge(Findings* findings, int directory, char* name, const char* owner, time_t now)
{
    Finding finding = {.name = name, .modified = 0, .expired = false, .maybe_pinned = false};
    finding.maybe_pinned = owner != nullptr && concerns(directory, name, owner);
    struct stat status = {};
    if (fstatat(directory, name, &status, 0) == 0) {
        finding.modified = status.st_mtime;
        finding.expired = difftime(now, status.st_mtime) > LIFETIME_SECONDS;
    }
    return (!finding.maybe_pinned && !finding.expired) || note(findings, finding);
}

void removeExpired(int directory, const Finding& record, time_t now)
{
    LOG_IN(
        "CleanupObsoleteLocalSessions", __LINE__, Info,
        "[CleanupObsoleteLocalSessions] REMOVE file %s timestamp %lld [curtime %lld]\n",
        record.name, static_cast<long long>(record.modified), static_cast<long long>(now)
    );
    if (unlinkat(directory, record.name, 0) != 0) {
        return; // pinned, or another sweep was faster
    }
    char object[1 + NAME_MAX + 1];
    snprintf(object, sizeof object, "/%s", record.name);
    shm_unlink(object);
}

} // namespace

// Records are judged in the order in which the directory yields them, and only the few that
// something is to be done about are sorted: most sweeps find none, and sorting all would double
// their cost.
int CleanupObsoleteLocalSessions(const char* immutableOwner)
{
    AUTO_CLOSE_DIR DIR* records = opendir(LOCAL_SESSION_DIRECTORY);
    if (records == nullptr) {
        return errno == ENOENT ? SUCCESS : -1;
    }

    [[gnu::cleanup(releaseFindings)]] Findings findings = {};
    const int directory = dirfd(records);
    const time_t now = time(nullptr);
    int result = SUCCESS;
    while (dirent* entry = readdir(records)) {
        if (entry->d_type == DT_REG &&
            !judge(&findings, directory, entry->d_name, immutableOwner, now)) {
            result = -1; // no memory to note more: the next sweep finds it
            break;
        }
    }

    if (findings.count > 1) {
        qsort(findings.items, findings.count, sizeof(Finding), byName);
    }
    for (std::size_t i = 0; i < findings.count; ++i) {
        const Finding& record = findings.items[i];
        if (record.maybe_pinned) {
            unpinIfOwned(record.name, immutableOwner);
        }
        if (record.expired) {
            removeExpired(directory, record, now);
        }
    }
    return result;
}
