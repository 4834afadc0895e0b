#include "syscmd/sessions/record.h"

#include "common/common.h"
#include "common/io.h"
#include "liblst/owned.h"
#include "liblst/whole_file.h"
#include "syscmd/sessions/inode_flags.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

constexpr mode_t DIRECTORY_MODE = 0005;
constexpr mode_t RECORD_MODE = 0004;
/** Longest path of a new record, with its NUL. */
constexpr std::size_t RECORD_PATH_SIZE = 256;
constexpr const char* PINNED = "0";

bool directoryIsMissing()
{
    struct stat status = {};
    return stat(LOCAL_SESSION_DIRECTORY, &status) != 0 && errno == ENOENT;
}

/** Pins an open record. */
void pin(int record, const char* path)
{
    static constexpr const char* FUNCTION = "UpdateLocalSessionRecords";
    LOG_IN(
        FUNCTION, __LINE__, Debug, "[CleanupObsoleteLocalSessions] set immutable flag on file %s\n",
        path
    );
    if (setInodeFlags(record, FS_IMMUTABLE_FL) != SUCCESS) {
        ErrorText text = {};
        LOG_IN(
            FUNCTION, __LINE__, Error, "[UpdateLocalSessionRecords]  ioctl failed on %s: %s\n",
            path, errorText(text, errno)
        );
    }
}

/** Opens a record for writing, created or emptied; below 0 when that cannot be. */
int openRecord(const char* path)
{
    return open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
}

} // namespace

int UpdateLocalSessionRecords(const char* token, const char* username, const char* expires)
{
    if (token == nullptr || username == nullptr || expires == nullptr) {
        LOG(Error, "ERROR [syscmd:UpdateLocalSessionRecords] invalid input arguments\n");
        return -1;
    }
    char path[RECORD_PATH_SIZE];
    const int length = snprintf(path, sizeof path, "%s/%s", LOCAL_SESSION_DIRECTORY, token);
    if (length < 0 || static_cast<std::size_t>(length) >= sizeof path) {
        return -1;
    }

    AUTO_CLOSE_FD int record = openRecord(path);
    if (record < 0 && directoryIsMissing()) {
        if (mkdir(LOCAL_SESSION_DIRECTORY, DIRECTORY_MODE) != 0) {
            LOG(Error, "[UpdateLocalSessionRecords] mkdir %s failed; errno=%d\n",
                LOCAL_SESSION_DIRECTORY, errno);
            return -1;
        }
        record = openRecord(path);
    }
    if (record < 0) {
        return -1;
    }
    if (strcmp(expires, PINNED) == 0) {
        pin(record, path); // before the content: what is open may be written
    }
    writeAll(record, username, strlen(username));
    fchmod(
        record, RECORD_MODE
    ); // refused for a pinned record, which keeps the mode of its creation
    return SUCCESS;
}
