/** Binding of an account to single sign-on. */
#pragma once

/** Results of UpgradeUserToSSO beside SUCCESS. */
enum UpgradeFailure : int {
    UPGRADE_INVALID_ARGUMENT = -1,
    UPGRADE_UPDATE_FAILED = -2,     /**< the account was not updated */
    UPGRADE_OWNER_FILE_FAILED = -3, /**< the owner's file was not rewritten; stands before -2 */
};

/**
 * Renames an account to its single sign-on name, rewrites the owner file when it is the owner's,
 * and sets the upgrade flag. Each step is taken even if the one before failed; a flag that cannot
 * be set is logged and does not change the result.
 *
 * @param user_id      the account's id, a decimal text
 * @param p2pusername  the account's present name, which stays bound to it as its cloud user
 * @param ssousername  the name that it is to have
 * @param ssopassword  Base64 of SMB hash, colon, system hash; null keeps the password
 * @param email        the e-mail address, stored whole
 * @return 0, or an UpgradeFailure (logged)
 */
int UpgradeUserToSSO(
    const char* user_id,
    const char* p2pusername,
    const char* ssousername,
    const char* ssopassword,
    const char* email
);
