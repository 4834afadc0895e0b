/** The system's user and group database, by its re-entrant look-ups (getpwnam_r(3)). */
#pragma once

#include <sys/types.h>

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

/** Whether user `name`, whose primary group is `primary`, belongs to `group_name`, by that or by
 * the group's list of members; false when a look-up failed. */
bool isMember(const char* name, gid_t primary, const char* group_name);

/**
 * Looks a local account's id up.
 *
 * @return 0 with `*uid` set; -1 when there is no such user, the look-up failed, or an argument is
 *         null
 */
int getUserIDByName(const char* user, uid_t* uid);

/**
 * The same as a decimal text.
 *
 * @param user_id   receives the id, which the caller releases with free(); untouched on failure
 * @param username  the account's name
 * @return 0, or -1 when the name is unknown, memory runs out, or an argument is null (logged)
 */
int GetUserIDByUsername(char** user_id, const char* username);
