/** Change of an account at the daemon. */
#pragma once

/** An account, and what it is to become. The texts are the caller's, NUL-terminated; those that may
 * be null are left as they are at the account. */
struct UserUpdate {
    const char* user_id;                 /**< the account's id, a decimal text */
    const char* username;                /**< the name that it is to have */
    const char* password_hash = nullptr; /**< Base64 of SMB hash, colon, system hash; may be null */
    const char* group = nullptr; /**< the primary group's name; may be null without a cloud user */
    const char* email;           /**< the e-mail address, stored whole */
    const char* p2pusername = nullptr; /**< the cloud user bound to the account; may be null */
    /** The cloud owner's name where it was read just now, which is cut; null: it is read. */
    char* owner = nullptr;
};

/**
 * Changes an account: renames it and, where given, sets its hashes, group, e-mail address and cloud
 * user. The request names the device's cloud owner as its authority, from the owner file.
 *
 * Neither hashes nor cloud user given, the group is not sent either. Hashes without a cloud user
 * also unlock the account, and make its cloud user "(null)".
 *
 * @return 0 when the daemon carried it out; -1 otherwise, and when id, name or e-mail address is
 *         null (logged): then nothing was changed, unless the reply was lost
 */
int UpdateUser(const UserUpdate& to);
