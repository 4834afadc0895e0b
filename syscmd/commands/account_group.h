/** The group that an account belongs to. */
#pragma once

/**
 * The group that an account is given.
 *
 * @param username  the account's name; compared whole with the owner's
 * @param isowner   set to 1 when the account is the cloud owner's, else to 0
 * @param owner     receives the owner's name as it was read, for the request that follows; the
 *                  caller releases it with free(); null when the owner file could not be read
 * @return "admin" for the owner, else SKYHOLD_GROUP; not to be released
 */
const char* getGroupByUsername(const char* username, int* isowner, char** owner);
