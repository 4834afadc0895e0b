#include "tools/failing_calls/wrap.h"

#include <fcntl.h>
#include <regex.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

const std::vector<Kind> KINDS = {
    {"allocation", {ENOMEM}, {"malloc", "calloc", "realloc", "strdup", "strndup", "new"}},
    {"access", {EACCES, EIO}},
    {"open", {EMFILE, EACCES, EINTR, ENOSPC}, {"open", "openat", "creat"}},
    {"read", {EIO, EINTR, EAGAIN, HALF}},
    {"write", {ENOSPC, EIO, EINTR, EAGAIN, HALF}},
    {"close", {EIO, EINTR}},
    {"fsync", {EIO, ENOSPC, EINTR}},
    {"fopen", {EMFILE, EACCES, EINTR, ENOSPC, ENOMEM}},
    {"fgets", {EIO, EINTR}},
    {"fputs", {ENOSPC, EIO}, {"fputs", "fprintf"}},
    {"fclose", {ENOSPC, EIO}},
    {"stat", {EACCES, EIO, ENOMEM}, {"stat", "fstat", "fstatat"}},
    {"mkdir", {ENOSPC, EACCES, EEXIST}},
    {"unlink", {EACCES, EIO, ENOENT}, {"unlink", "unlinkat"}},
    {"chmod", {EPERM, EIO}, {"fchmod"}},
    {"ioctl", {ENOTTY, EPERM, EIO}},
    {"opendir", {EMFILE, EACCES, ENOMEM, EINTR}},
    {"readdir", {EIO, EINTR}},
    {"scandir", {ENOMEM, EACCES, EIO}, {"scandirat"}},
    {"closedir", {EIO}},
    {"popen", {EMFILE, EAGAIN, ENOMEM}},
    {"pclose", {ECHILD, EINTR}},
    {"system", {EAGAIN, ENOMEM}},
    {"look-up",
     {EIO, EMFILE, ENOMEM, EINTR, ERANGE, NOBODY},
     {"getpwnam_r", "getgrnam_r", "getgrgid_r"}},
    {"sysconf", {EINVAL}},
    {"poll", {EINTR, ENOMEM}},
    {"lockf", {ENOLCK, EINTR, EDEADLK}},
    {"regex", {REG_ESPACE}, {"regcomp", "regexec"}},
    {"crypt", {ENOMEM, EINVAL}, {"crypt_r"}},
    {"localtime", {EOVERFLOW}, {"localtime_r"}},
    {"shm_unlink", {EACCES}},
    {"client", {UNSENT, LOST, NO_REPLY, CUT}},
};

long live = 0;

namespace {

bool armed = false;
std::span<Trial> planned;
Trial* striking = nullptr; // the last that did
bool struck = false;

} // namespace

std::string nameOf(const Fault& fault)
{
    return std::string(fault.kind) + ' ' + std::to_string(fault.nth) +
           (fault.onward ? " and on" : "") + ", error " + std::to_string(fault.error) +
           (fault.error == CUT ? " at " + std::to_string(fault.kept) : "");
}

bool withFault(const Fault& fault, const std::function<void()>& call)
{
    Trial trial{fault};
    return withFaults({&trial, 1}, call);
}

bool withFaults(std::span<Trial> trials, const std::function<void()>& call)
{
    planned = trials;
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
    if (!armed) {
        return 0;
    }
    int error = 0;
    for (Trial& trial : planned) {
        const Fault& fault = trial.fault;
        if (std::strcmp(kind, fault.kind) != 0) {
            continue;
        }
        ++trial.seen;
        if (trial.seen == fault.nth || (fault.onward && trial.seen > fault.nth)) {
            striking = &trial;
            trial.struck = struck = true;
            error = fault.error;
        }
    }
    errno = error != 0 ? error : errno;
    return error;
}

bool faultStruck()
{
    return struck;
}

std::size_t cutLength(std::size_t whole)
{
    const std::size_t kept = striking->fault.kept;
    striking->struck = struck = kept < whole;
    return std::min(kept, whole);
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

bool faultsAreArmed()
{
    return armed;
}

int openDescriptors()
{
    int count = 0;
    for (int fd = 0; fd < 128; ++fd) {
        count += fcntl(fd, F_GETFD) != -1 ? 1 : 0;
    }
    return count;
}
