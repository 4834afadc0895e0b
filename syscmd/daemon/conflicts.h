/** Local accounts that bear a name which a cloud user is to have. */
#pragma once

/**
 * Moves local accounts out of the way of a cloud user's account that is to be renamed: the account
 * called `new_username`, unless the name stays as it is, and the one called like the peer-to-peer
 * user, unless that is the new name.
 *
 * @param username      the account's present name
 * @param new_username  the name that it is to have
 * @param p2pusername   the peer-to-peer user bound to it; may be null
 * @return 0 when nothing had to be renamed; else the result of the last rename (see
 *         renameLocalUserIfExists), whatever became of the one before; -1 when `username` or
 *         `new_username` is null (logged)
 */
int resolveLocalUserConflicts(
    const char* username, const char* new_username, const char* p2pusername
);

/**
 * Renames the account `username`, if the daemon knows one, to its first 27 bytes and four random
 * hexadecimal digits, and raises a warning event on the device, even if the rename was refused.
 *
 * @param username   the account's name
 * @param clouduser  the cloud user that the event names
 * @return 0 renamed, or no such account (a failed query included); -1 null `username` (logged);
 *         -2 no memory for the new name; -3 refused (logged)
 */
int renameLocalUserIfExists(const char* username, const char* clouduser);
