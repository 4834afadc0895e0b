/** Deletion of accounts at the daemon. */
#pragma once

/** What DelUser may delete. */
enum Force : int {
    CLOUD_ACCOUNTS_ONLY = 0, /**< accounts of SKYHOLD_GROUP; others are left alone */
    ANY_ACCOUNT = 1,
};

/**
 * Deletes a local account, keeping its home folder, and then its remote-access user.
 *
 * An account that neither daemon nor system knows is no failure, unless its name holds an at sign
 * and no group came back: then its remote-access user is deleted and the result is -1.
 *
 * @param username     the account's name
 * @param p2pusername  the name of the remote-access user that goes with it
 * @param force        CLOUD_ACCOUNTS_ONLY or ANY_ACCOUNT
 * @return 0 when the account was deleted or there was none that this call may delete; -1 on failure
 *         (logged) and when an argument is null (logged)
 */
int DelUser(const char* username, const char* p2pusername, int force);
