/** The system's user and group database, by its re-entrant look-ups (getpwnam_r(3)). */
#pragma once

#include <pwd.h>
#include <sys/types.h>

#include <cstddef>

/** Bytes of a look-up buffer where the system reports 0, and the step by which one grows. */
constexpr std::size_t LOOK_UP_BUFFER_STEP = 16384;

/** Bytes that the system reports for look-ups of kind `sysconf_name` (_SC_GETPW_R_SIZE_MAX or
 * _SC_GETGR_R_SIZE_MAX). A size of -1 ("no limit") comes through as the largest size, which no
 * allocation grants: the look-up then fails. */
std::size_t lookUpBufferSize(int sysconf_name);

/** The numbers of a user's entry. */
struct UserNumbers {
    uid_t user;
    gid_t group; /**< the primary group */
};

/**
 * Looks a user up by name.
 *
 * @return 0 with `*numbers` set; -1 when there is no such user or the look-up failed
 */
int findUser(const char* name, UserNumbers* numbers);
