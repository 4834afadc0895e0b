// Calls on files, look-ups, and what else of the C library can fail.
#include "tools/failing_calls/wrap.h"

#include <crypt.h>
#include <dirent.h>
#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <pwd.h>
#include <regex.h>
#include <stdio_ext.h>
#include <sys/stat.h>

#include <cstdarg>
#include <cstring>
#include <ctime>

/** Whatever a program that is started meanwhile would hold open ends the process. */
static void expectClosedInOthers(bool is_closed)
{
    if (faultsAreArmed() && !is_closed) {
        abort();
    }
}

std::function<void(const char*)> on_writing;
static void tellWriting(const char* path, bool writes)
{
    if (faultsAreArmed() && writes && on_writing) {
        const Aside aside;
        on_writing(path);
    }
}

CALL("access", int, access, (const char* path, int mode), (path, mode), -1)
CALL("open", int, creat64, (const char* path, mode_t mode), (path, mode), -1)
CALL(
    "open",
    int,
    openat64,
    (int directory, const char* name, int flags, ...),
    (directory, name, flags),
    -1
)
DECLARE(int, open64, (const char* path, int flags, ...))
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    expectClosedInOthers((flags & O_CLOEXEC) != 0);
    tellWriting(path, (flags & O_ACCMODE) != O_RDONLY);
    return strike("open") != 0 ? -1 : __real_open64(path, flags, mode);
}
DECLARE(ssize_t, read, (int fd, void* to, std::size_t size))
{
    const int error = strike("read");
    return error != 0 && error != HALF ? -1
                                       : __real_read(fd, to, error == HALF ? (size + 1) / 2 : size);
}
DECLARE(ssize_t, write, (int fd, const void* from, std::size_t size))
{
    const int error = strike("write");
    return error != 0 && error != HALF
               ? -1
               : __real_write(fd, from, error == HALF ? (size + 1) / 2 : size);
}
RELEASE("close", close, (int fd), (fd), -1, 0)
CALL("fsync", int, fsync, (int fd), (fd), -1)
CALL("poll", int, poll, (pollfd * fds, nfds_t count, int timeout), (fds, count, timeout), -1)
CALL("lockf", int, lockf64, (int fd, int command, off64_t length), (fd, command, length), -1)

DECLARE(FILE*, fopen64, (const char* path, const char* mode))
{
    expectClosedInOthers(strchr(mode, 'e') != nullptr);
    tellWriting(path, *mode != 'r');
    return strike("fopen") != 0 ? nullptr : counted(__real_fopen64(path, mode));
}
CALL("fgets", char*, fgets, (char* to, int size, FILE* stream), (to, size, stream), nullptr)
CALL("fputs", int, fputs, (const char* text, FILE* stream), (text, stream), EOF)
extern "C" int __wrap_fprintf(FILE* stream, const char* format, ...)
    __attribute__((format(printf, 2, 3)));
int __wrap_fprintf(FILE* stream, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int written = strike("fputs") != 0 ? EOF : vfprintf(stream, format, arguments);
    va_end(arguments);
    return written;
}
extern "C" int __wrap___fprintf_chk(FILE* stream, int flag, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
int __wrap___fprintf_chk(FILE* stream, int, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int written = strike("fputs") != 0 ? EOF : vfprintf(stream, format, arguments);
    va_end(arguments);
    return written;
}
DECLARE(int, fclose, (FILE * stream))
{
    const int error = strike("fclose");
    if (error != 0) {
        __fpurge(stream); // what the disk did not take
    }
    live -= 1;
    const int result = __real_fclose(stream);
    errno = error != 0 ? error : errno;
    return error != 0 ? EOF : result;
}

CALL("stat", int, stat64, (const char* path, struct stat64* status), (path, status), -1)
CALL("stat", int, fstat64, (int fd, struct stat64* status), (fd, status), -1)
CALL(
    "stat",
    int,
    fstatat64,
    (int directory, const char* name, struct stat64* status, int flags),
    (directory, name, status, flags),
    -1
)
CALL("mkdir", int, mkdir, (const char* path, mode_t mode), (path, mode), -1)
CALL("unlink", int, unlink, (const char* path), (path), -1)
CALL(
    "unlink",
    int,
    unlinkat,
    (int directory, const char* name, int flags),
    (directory, name, flags),
    -1
)
CALL("chmod", int, fchmod, (int fd, mode_t mode), (fd, mode), -1)
CALL("shm_unlink", int, shm_unlink, (const char* name), (name), -1)
DECLARE(int, ioctl, (int fd, unsigned long request, ...))
{
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    return strike("ioctl") != 0 ? -1 : __real_ioctl(fd, request, argument);
}

OBTAIN("opendir", DIR*, opendir, (const char* path), (path))
DECLARE(
    int,
    scandirat64,
    (int directory,
     const char* path,
     dirent64*** list,
     int (*filter)(const dirent64*),
     int (*compare)(const dirent64**, const dirent64**))
)
{
    if (strike("scandir") != 0) {
        return -1;
    }
    const int count = __real_scandirat64(directory, path, list, filter, compare);
    live += count >= 0 ? count + (*list != nullptr ? 1 : 0) : 0;
    return count;
}
RELEASE("closedir", closedir, (DIR * directory), (directory), -1, 1)
CALL("readdir", dirent64*, readdir64, (DIR * directory), (directory), nullptr)

/** A re-entrant look-up: it returns its error. */
// NOLINTBEGIN(bugprone-macro-parentheses): `type` is one
#define LOOK_UP(type, name, key_type)                                                              \
    DECLARE(int, name, (key_type key, type * entry, char* buffer, std::size_t size, type** found)) \
    {                                                                                              \
        const int error = strike("look-up");                                                       \
        *found = nullptr;                                                                          \
        return error == NOBODY ? 0                                                                 \
               : error != 0    ? error                                                             \
                               : __real_##name(key, entry, buffer, size, found);                      \
    }
// NOLINTEND(bugprone-macro-parentheses)
LOOK_UP(passwd, getpwnam_r, const char*)
LOOK_UP(group, getgrnam_r, const char*)
LOOK_UP(group, getgrgid_r, gid_t)
CALL("sysconf", long, sysconf, (int name), (name), -1)

DECLARE(int, regcomp, (regex_t * compiled, const char* pattern, int flags))
{
    const int error = strike("regex") != 0 ? REG_ESPACE : __real_regcomp(compiled, pattern, flags);
    live += error == 0 ? 1 : 0;
    return error;
}
CALL(
    "regex",
    int,
    regexec,
    (const regex_t* compiled, const char* text, std::size_t count, regmatch_t* matches, int flags),
    (compiled, text, count, matches, flags),
    REG_ESPACE
)
DECLARE(void, regfree, (regex_t * compiled))
{
    live -= 1;
    __real_regfree(compiled);
}
CALL(
    "crypt",
    char*,
    crypt_r,
    (const char* phrase, const char* setting, crypt_data* work),
    (phrase, setting, work),
    nullptr
)
CALL("localtime", tm*, localtime_r, (const time_t* when, tm* local), (when, local), nullptr)

/** One second for the whole run, 2026-03-04 05:06:07 UTC: names drawn from it, and ages, are the
 * same in every trial. */
DECLARE(time_t, time, (time_t*))
{
    return 1772600767;
}
/** Journal entries are the operations' tests' affair; here they would only take time. */
std::function<void(const char*, const char*)> on_entry;
extern "C" int
__wrap_sd_journal_send_with_location(const char*, const char*, const char*, const char*, ...);
int __wrap_sd_journal_send_with_location(
    const char* file, const char*, const char*, const char* format, ...
)
{
    if (on_entry) {
        const Aside aside;
        va_list arguments;
        va_start(arguments, format);
        on_entry(file, va_arg(arguments, const char*));
        va_end(arguments);
    }
    return -ENOMEM;
}
