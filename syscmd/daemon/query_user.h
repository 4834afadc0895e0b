/** Look-up of one user at the daemon. */
#pragma once

/**
 * Asks the daemon for one user. A record matches when it holds an id and a group, and its name is
 * `username` or begins with "leafuser_".
 *
 * A field that is missing from a record is taken from a later one.
 *
 * @param user_id     receives the id as a decimal text: the matching record's, or an empty text
 *                    when there are records and none matches
 * @param user_group  receives the primary group's name; without a match, the last record's
 * @param user_email  receives the e-mail address; without a match, the last record's
 * @param username    the account's name
 * @return 0 with all three set, the caller releasing them with free(); -1, all three untouched,
 * when the daemon failed, refused or knows no record (logged but for the last), memory ran out, or
 *         an argument is null
 */
int GetUserData(char** user_id, char** user_group, char** user_email, const char* username);
