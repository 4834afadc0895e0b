#include "common/device/accounts.h"

#include "common/common.h"
#include "liblst/owned.h"

#include <unistd.h>

#include <cstdlib>

std::size_t lookUpBufferSize(int sysconf_name)
{
    const long reported = sysconf(sysconf_name);
    return reported == 0 ? LOOK_UP_BUFFER_STEP : static_cast<std::size_t>(reported);
}

int findUser(const char* name, UserNumbers* numbers)
{
    const std::size_t size = lookUpBufferSize(_SC_GETPW_R_SIZE_MAX);
    AUTO_FREE auto* buffer = static_cast<char*>(malloc(size));
    if (buffer == nullptr) {
        return -1;
    }

    passwd entry = {};
    passwd* found = nullptr;
    if (getpwnam_r(name, &entry, buffer, size, &found) != 0 || found == nullptr) {
        return -1;
    }
    *numbers = {entry.pw_uid, entry.pw_gid};
    return SUCCESS;
}
