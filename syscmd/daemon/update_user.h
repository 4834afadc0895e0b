/** Change of an account at the daemon. */
#pragma once

/**
 * Changes an account: renames it and, where given, sets its hashes, group, e-mail address and cloud
 * user. The request names the device's cloud owner, from the owner file, as its authority.
 *
 * Neither hashes nor cloud user given, the group is not sent either. Hashes without a cloud user
 * also unlock the account.
 *
 * @param user_id        the account's id, a decimal text
 * @param username       the name that it is to have
 * @param password_hash  Base64 of SMB hash, colon, system hash; null keeps the password
 * @param group          the primary group's name
 * @param email          the e-mail address, stored whole
 * @param p2pusername    the cloud user bound to the account; may be null
 * @return 0 when the daemon carried it out; -1 otherwise, and when `user_id`, `username` or `email`
 *         is null (logged): then nothing was changed, unless the reply was lost
 */
int UpdateUser(
    const char* user_id,
    const char* username,
    const char* password_hash,
    const char* group,
    const char* email,
    const char* p2pusername
);
