#include "liblst/export.h"
#include "liblst/failure.h"
#include "liblst/liblst.h"
#include "liblst/owned.h"
#include "liblst/retry.h"

#include <fcntl.h>
#include <sys/stat.h>

// Both calls name the same file.
#define LOCK_FILE "%s.lock"

EXPORTED int lockF(const char* name)
{
    if (name == nullptr) {
        return badArgument(-1);
    }
    if (access(name, F_OK) != 0) {
        return -1;
    }
    AUTO_FREE char* path = String(LOCK_FILE, name);
    if (path == nullptr) {
        return -1;
    }
    AUTO_CLOSE_FD int fd = openPatiently(path, O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (fd < 0) {
        return -1;
    }
    if (lockf(fd, F_LOCK, 0) != 0) {
        const int error = errno;
        unlink(path);
        errno = error;
        return -1;
    }
    return takeFd(fd);
}

EXPORTED void ulockF(const char* name, int fd)
{
    if (name == nullptr) {
        errno = EINVAL;
        return;
    }
    AUTO_CLOSE_FD const int locked = fd;
    AUTO_FREE char* path = String(LOCK_FILE, name);
    [[maybe_unused]] const int unlocked = lockf(locked, F_ULOCK, 0); // closing unlocks all the same
    if (path != nullptr) {
        unlink(path);
    }
}
