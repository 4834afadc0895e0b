#include "tests/faults/faults.h"

#include <crypt.h>
#include <dirent.h>
#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <pwd.h>
#include <regex.h>
#include <stdio_ext.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <ctime>
#include <map>
#include <new>
#include <utility>

const std::vector<Kind> KINDS = {
    {"allocation", {ENOMEM}},
    {"access", {EACCES, EIO}},
    {"open", {EMFILE, EACCES, EINTR, ENOSPC}},
    {"read", {EIO, EINTR, EAGAIN, HALF}},
    {"write", {ENOSPC, EIO, EINTR, EAGAIN, HALF}},
    {"close", {EIO, EINTR}},
    {"fsync", {EIO, ENOSPC}},
    {"fopen", {EMFILE, EACCES, EINTR, ENOSPC, ENOMEM}},
    {"fgets", {EIO, EINTR}},
    {"fputs", {ENOSPC, EIO}},
    {"fclose", {ENOSPC, EIO}},
    {"stat", {EACCES, EIO, ENOMEM}},
    {"mkdir", {ENOSPC, EACCES, EEXIST}},
    {"unlink", {EACCES, EIO, ENOENT}},
    {"chmod", {EPERM, EIO}},
    {"ioctl", {ENOTTY, EPERM, EIO}},
    {"opendir", {EMFILE, EACCES, ENOMEM}},
    {"readdir", {EIO}},
    {"closedir", {EIO}},
    {"popen", {EMFILE, EAGAIN, ENOMEM}},
    {"pclose", {ECHILD, EINTR}},
    {"system", {EAGAIN, ENOMEM}},
    {"look-up", {EIO, EMFILE, ENOMEM, EINTR, ERANGE, NOBODY}},
    {"sysconf", {EINVAL}},
    {"poll", {EINTR, ENOMEM}},
    {"lockf", {ENOLCK, EINTR, EDEADLK}},
    {"regex", {REG_ESPACE}},
    {"crypt", {ENOMEM, EINVAL}},
    {"localtime", {EOVERFLOW}},
    {"shm_unlink", {EACCES}},
    {"client", {UNSENT, LOST, NO_REPLY, CUT}},
};

bool shell_is_replayed = false;
std::function<void(const char*)> on_command;

static bool armed = false;
static Fault planned;
static int seen = 0;
static bool struck = false;
static long live = 0;

std::string nameOf(const Fault& fault)
{
    return std::string(fault.kind) + ' ' + std::to_string(fault.nth) + (fault.onward ? " and on" : "") + ", error " +
           std::to_string(fault.error) + (fault.error == CUT ? " at " + std::to_string(fault.kept) : "");
}

bool withFault(const Fault& fault, const std::function<void()>& call)
{
    planned = fault;
    seen = 0;
    struck = false;
    armed = true;
    try {
        call();
    } catch (...) {
        armed = false;
        throw;
    }
    armed = false;
    return struck;
}

int strike(const char* kind)
{
    if (!armed || std::strcmp(kind, planned.kind) != 0) {
        return 0;
    }
    ++seen;
    if (seen != planned.nth && !(planned.onward && seen > planned.nth)) {
        return 0;
    }
    struck = true;
    errno = planned.error;
    return planned.error;
}

bool faultStruck()
{
    return struck;
}

std::size_t cutLength(std::size_t whole)
{
    struck = planned.kept < whole;
    return std::min(planned.kept, whole);
}
Aside::Aside() : armed(std::exchange(::armed, false)), live(::live) {}
Aside::~Aside()
{
    ::armed = armed;
    ::live = live;
}
long liveResources()
{
    return live;
}
void countBlock()
{
    ++live;
}

int openDescriptors()
{
    int count = 0;
    for (int fd = 0; fd < 128; ++fd) {
        count += fcntl(fd, F_GETFD) != -1 ? 1 : 0;
    }
    return count;
}

template<class Resource> static Resource* counted(Resource* resource)
{
    live += resource != nullptr ? 1 : 0;
    return resource;
}

// ---- the calls (--wrap) ------------------------------------------------------------------------

#define DECLARE(type, name, parameters)                                                                                \
    extern "C" type __real_##name parameters;                                                                          \
    extern "C" type __wrap_##name parameters;                                                                          \
    type __wrap_##name parameters
/** A call that fails with `failure`, or else is made. */
#define CALL(kind, type, name, parameters, arguments, failure)                                                         \
    DECLARE(type, name, parameters)                                                                                    \
    {                                                                                                                  \
        return strike(kind) != 0 ? (failure) : __real_##name arguments;                                                \
    }
/** One whose result is a resource. */
#define OBTAIN(kind, type, name, parameters, arguments)                                                                \
    DECLARE(type, name, parameters)                                                                                    \
    {                                                                                                                  \
        return strike(kind) != 0 ? nullptr : counted(__real_##name arguments);                                         \
    }
/** One that releases a resource, even where it fails. */
#define RELEASE(kind, name, parameters, arguments, failure, counts)                                                    \
    DECLARE(int, name, parameters)                                                                                     \
    {                                                                                                                  \
        const int error = strike(kind);                                                                                \
        live -= counts;                                                                                                \
        const int result = __real_##name arguments;                                                                    \
        errno = error != 0 ? error : errno;                                                                            \
        return error != 0 ? (failure) : result;                                                                        \
    }

OBTAIN("allocation", char*, strdup, (const char* text), (text))
OBTAIN("allocation", char*, strndup, (const char* text, std::size_t size), (text, size))
OBTAIN("allocation", void*, calloc, (std::size_t count, std::size_t size), (count, size))
DECLARE(void*, malloc, (std::size_t size))
{
    // A size of -1 is refused here: AddressSanitizer would end the process.
    return strike("allocation") != 0 || size > PTRDIFF_MAX ? nullptr : counted(__real_malloc(size));
}
DECLARE(void*, realloc, (void* old, std::size_t size))
{
    void* block = strike("allocation") != 0 ? nullptr : __real_realloc(old, size);
    live += old == nullptr && block != nullptr ? 1 : 0;
    return block;
}
DECLARE(void, free, (void* block))
{
    live -= block != nullptr ? 1 : 0;
    __real_free(block);
}
void* operator new(std::size_t size)
{
    void* block = __wrap_malloc(size);
    return block != nullptr ? block : throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return __wrap_malloc(size);
}
void* operator new[](std::size_t size)
{
    return operator new(size);
}
void operator delete(void* block) noexcept
{
    __wrap_free(block);
}
void operator delete(void* block, std::size_t) noexcept
{
    __wrap_free(block);
}
void operator delete[](void* block) noexcept
{
    __wrap_free(block);
}
void operator delete[](void* block, std::size_t) noexcept
{
    __wrap_free(block);
}

CALL("access", int, access, (const char* path, int mode), (path, mode), -1)
CALL("open", int, creat64, (const char* path, mode_t mode), (path, mode), -1)
CALL("open", int, openat64, (int directory, const char* name, int flags, ...), (directory, name, flags), -1)
DECLARE(int, open64, (const char* path, int flags, ...))
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return strike("open") != 0 ? -1 : __real_open64(path, flags, mode);
}
DECLARE(ssize_t, read, (int fd, void* to, std::size_t size))
{
    const int error = strike("read");
    return error != 0 && error != HALF ? -1 : __real_read(fd, to, error == HALF ? (size + 1) / 2 : size);
}
DECLARE(ssize_t, write, (int fd, const void* from, std::size_t size))
{
    const int error = strike("write");
    return error != 0 && error != HALF ? -1 : __real_write(fd, from, error == HALF ? (size + 1) / 2 : size);
}
RELEASE("close", close, (int fd), (fd), -1, 0)
CALL("fsync", int, fsync, (int fd), (fd), -1)
CALL("poll", int, poll, (pollfd * fds, nfds_t count, int timeout), (fds, count, timeout), -1)
CALL("lockf", int, lockf64, (int fd, int command, off64_t length), (fd, command, length), -1)

OBTAIN("fopen", FILE*, fopen64, (const char* path, const char* mode), (path, mode))
CALL("fgets", char*, fgets, (char* to, int size, FILE* stream), (to, size, stream), nullptr)
CALL("fputs", int, fputs, (const char* text, FILE* stream), (text, stream), EOF)
extern "C" int __wrap_fprintf(FILE* stream, const char* format, ...) __attribute__((format(printf, 2, 3)));
int __wrap_fprintf(FILE* stream, const char* format, ...)
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
CALL("stat", int, fstatat64, (int directory, const char* name, struct stat64* status, int flags),
    (directory, name, status, flags), -1)
CALL("mkdir", int, mkdir, (const char* path, mode_t mode), (path, mode), -1)
CALL("unlink", int, unlink, (const char* path), (path), -1)
CALL("unlink", int, unlinkat, (int directory, const char* name, int flags), (directory, name, flags), -1)
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
CALL("readdir", int, readdir64_r, (DIR * directory, dirent64* entry, dirent64** found), (directory, entry, found),
    (*found = nullptr, EIO))
RELEASE("closedir", closedir, (DIR * directory), (directory), -1, 1)
CALL("readdir", dirent64*, readdir64, (DIR * directory), (directory), nullptr)

static FILE* replay(const char* command)
{
    const Aside aside;
    static std::map<std::string, std::string> printed;
    auto known = printed.find(command);
    if (known == printed.end()) {
        char text[1024] = "";
        FILE* pipe = popen(command, "r");
        text[fread(text, 1, sizeof text - 1, pipe)] = '\0';
        pclose(pipe);
        known = printed.emplace(command, text).first;
    }
    return fmemopen(known->second.data(), known->second.size(), "r");
}
DECLARE(FILE*, popen, (const char* command, const char* mode))
{
    if (strike("popen") != 0) {
        return nullptr;
    }
    return counted(armed && shell_is_replayed ? replay(command) : __real_popen(command, mode));
}
DECLARE(int, pclose, (FILE * stream))
{
    const int error = strike("pclose");
    live -= 1;
    const int status = armed && shell_is_replayed ? __real_fclose(stream) : __real_pclose(stream);
    errno = error != 0 ? error : errno;
    return error != 0 ? -1 : status;
}
DECLARE(int, system, (const char* command))
{
    if (strike("system") != 0) {
        return -1;
    }
    if (!shell_is_replayed) {
        return __real_system(command);
    }
    const Aside aside;
    on_command(command);
    return 0;
}

/** A re-entrant look-up: it returns its error. */
#define LOOK_UP(type, name, key_type)                                                                                  \
    DECLARE(int, name, (key_type key, type * entry, char* buffer, std::size_t size, type** found))                     \
    {                                                                                                                  \
        const int error = strike("look-up");                                                                           \
        *found = nullptr;                                                                                              \
        return error == NOBODY ? 0 : error != 0 ? error : __real_##name(key, entry, buffer, size, found);              \
    }
LOOK_UP(passwd, getpwnam_r, const char*)
LOOK_UP(group, getgrnam_r, const char*)
LOOK_UP(group, getgrgid_r, gid_t)
CALL("sysconf", long, sysconf, (int name), (name), -1)
CALL("sysconf", long, pathconf, (const char* path, int name), (path, name), -1)

DECLARE(int, regcomp, (regex_t * compiled, const char* pattern, int flags))
{
    const int error = strike("regex") != 0 ? REG_ESPACE : __real_regcomp(compiled, pattern, flags);
    live += error == 0 ? 1 : 0;
    return error;
}
CALL("regex", int, regexec,
    (const regex_t* compiled, const char* text, std::size_t count, regmatch_t* matches, int flags),
    (compiled, text, count, matches, flags), REG_ESPACE)
DECLARE(void, regfree, (regex_t * compiled))
{
    live -= 1;
    __real_regfree(compiled);
}
CALL("crypt", char*, crypt_r, (const char* phrase, const char* setting, crypt_data* work), (phrase, setting, work),
    nullptr)
CALL("localtime", tm*, localtime_r, (const time_t* when, tm* local), (when, local), nullptr)

/** One second for the whole run: names drawn from it, and ages, are the same in every trial. */
DECLARE(time_t, time, (time_t*))
{
    static const time_t start = __real_time(nullptr);
    return start;
}
/** Journal entries are the operations' tests' affair; here they would only take time. */
extern "C" int __wrap_sd_journal_send_with_location(const char*, const char*, const char*, const char*, ...);
int __wrap_sd_journal_send_with_location(const char*, const char*, const char*, const char*, ...)
{
    return -ENOMEM;
}
