/**
 * Who a requester is to this device: its cloud owner, or an unlocked member of a local group.
 *
 * Every routine asks afresh (the owner file, the management daemon, the user and group database)
 * and logs nothing; whatever cannot be found out counts as "no", or as locked. The plug-in exports
 * SKYHOLD_GROUP; the routines come from libsyscmd-common.a.
 */
#pragma once

#include "liblst/export.h"

/** Name of the local group that holds the users created by the cloud: "sky-hold". */
EXPORTED extern const char* const SKYHOLD_GROUP;

/**
 * Tells whether `user` is the owner or the remote-access owner named in the owner file, ignoring
 * case; of the owner's name the first MAX_USERNAME_LENGTH bytes count. An element that is missing
 * from the file counts as an empty name.
 *
 * @return 1 or 0
 */
int isOwner(const char* user);

/**
 * Tells whether `user` is an unlocked member of `group`, by the primary group or by the group's
 * list of members, under the name by which the daemon knows the user.
 *
 * @return 1 or 0
 */
int isUserInGroup(const char* user, const char* group);

/**
 * Asks the daemon whether `user` is locked.
 *
 * @param user  the login
 * @param name  receives the name as the daemon spells it, empty when there is no such user; the
 *              caller releases it with free(). Set, if at all, also for a locked user
 * @return the daemon's lock flag, the number as it stands: 0 (unlocked) when the reply has none; 1
 *         after any failure
 */
long isLocked(const char* user, char** name);
