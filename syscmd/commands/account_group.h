/** The group that an account belongs to. */
#pragma once

/**
 * The group that an account is given.
 *
 * @param username  the account's name; compared whole with the owner's
 * @param isowner   set to 1 when the account is the cloud owner's, else to 0
 * @return "admin" for the owner, else SKYHOLD_GROUP; not to be released
 */
const char* getGroupByUsername(const char* username, int* isowner);
