#include "tools/failing_calls/wrap.h"

#include <fcntl.h>
#include <regex.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

const std::vector<Kind> KINDS = {
    {"allocation", {ENOMEM}},
    {"access", {EACCES, EIO}},
    {"open", {EMFILE, EACCES, EINTR, ENOSPC}},
    {"read", {EIO, EINTR, EAGAIN, HALF}},
    {"write", {ENOSPC, EIO, EINTR, EAGAIN, HALF}},
    {"close", {EIO, EINTR}},
    {"fsync", {EIO, ENOSPC, EINTR}},
    {"fopen", {EMFILE, EACCES, EINTR, ENOSPC, ENOMEM}},
    {"fgets", {EIO, EINTR}},
    {"fputs", {ENOSPC, EIO}},
    {"fclose", {ENOSPC, EIO}},
    {"stat", {EACCES, EIO, ENOMEM}},
    {"mkdir", {ENOSPC, EACCES, EEXIST}},
    {"unlink", {EACCES, EIO, ENOENT}},
    {"chmod", {EPERM, EIO}},
    {"ioctl", {ENOTTY, EPERM, EIO}},
    {"opendir", {EMFILE, EACCES, ENOMEM, EINTR}},
    {"readdir", {EIO, EINTR}},
    {"scandir", {ENOMEM, EACCES, EIO}},
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

long live = 0;

namespace {

bool armed = false;
Fault planned;
int seen = 0;
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
