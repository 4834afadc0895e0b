#include "syscmd/sessions/record.h"

#include "common/error_text.h"
#include "common/log.h"
#include "common/result.h"
#include "liblst/owned.h"
#include "liblst/whole_file.h"
#include "syscmd/sessions/inode_flags.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

constexpr Speaker UPDATE = SPEAKER("UpdateLocalSessionRecords");

constexpr mode_t DIRECTORY_MODE = 0005;
constexpr mode_t RECORD_MODE = 0004;
/** Longest path of a new record, with its NUL. */
constexpr std::size_t RECORD_PATH_SIZE = 256;

/** Makes the directory if it is missing; false, logged, when that fails. */
bool haveDirectory()
{
    struct stat status = {};
    if (stat(LOCAL_SESSION_DIRECTORY, &status) == 0 || errno != ENOENT) {
        return true; // of what else is in the way, opening the record will tell
    }
    if (mkdir(LOCAL_SESSION_DIRECTORY, DIRECTORY_MODE) != 0) {
        LOG_AS(
            UPDATE, Error, "[%s] mkdir %s failed; errno=%d\n", UPDATE.function,
            LOCAL_SESSION_DIRECTORY, errno
        );
        return false;
    }
    return true;
}

/** Pins an open record. */
void pin(int record, const char* path)
{
    LOG_AS(UPDATE, Debug, "[CleanupObsoleteLocalSessions] set immutable flag on file %s\n", path);
    if (setInodeFlags(record, FS_IMMUTABLE_FL) != SUCCESS) {
        ErrorText text = {};
        LOG_AS(
            UPDATE, Error, "[%s]  ioctl failed on %s: %s\n", UPDATE.function, path,
            errorText(text, errno)
        );
    }
}

} // namespace

int UpdateLocalSessionRecords(const char* token, const char* username, const char* expires)
{
    if (token == nullptr || username == nullptr || expires == nullptr) {
        LOG(Error, "ERROR [syscmd:%s] invalid input arguments\n", __func__);
        return -1;
    }
    if (!haveDirectory()) {
        return -1;
    }
    char path[RECORD_PATH_SIZE];
    const int length = snprintf(path, sizeof path, "%s/%s", LOCAL_SESSION_DIRECTORY, token);
    if (length < 0 || static_cast<std::size_t>(length) >= sizeof path) {
        return -1;
    }
    AUTO_CLOSE_FD const int record = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (record < 0) {
        return -1;
    }

    if (strcmp(expires, PINNED) == 0) {
        pin(record, path); // before the content: what is open may be written
    }
    writeAll(record, username, strlen(username));
    fchmod(record, RECORD_MODE); // refused for a pinned record, which keeps its first mode
    return SUCCESS;
}
