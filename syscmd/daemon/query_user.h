/** Look-ups of one user before a change: in the system's user database and at the daemon. */
#pragma once

#include <sys/types.h>

/**
 * Looks a local account's id up in the system's user database.
 *
 * @param user_id   receives the id as a decimal text, which the caller releases with free();
 *                  untouched on failure
 * @param username  the account's name
 * @return 0, or -1 when the name is unknown, memory runs out, or an argument is null (logged)
 */
int GetUserIDByUsername(char** user_id, const char* username);

/** The same as a number. */
int getUserIDByName(const char* user, uid_t* uid);

/**
 * Asks the daemon for one user. A record matches when it holds an id and a group, and its name is
 * `username` or begins with "leafuser_".
 *
 * A field that is missing from a record is taken from a later one.
 *
 * @param user_id     receives the id as a decimal text: the matching record's, or an empty text
 * when there are records and none matches
 * @param user_group  receives the primary group's name; without a match, the last record's
 * @param user_email  receives the e-mail address; without a match, the last record's
 * @param username    the account's name
 * @return 0 with all three set, the caller releasing them with free(); -1, all three untouched,
 * when the daemon failed, refused or knows no record (logged but for the last), memory ran out, or
 *         an argument is null
 */
int GetUserData(char** user_id, char** user_group, char** user_email, const char* username);
