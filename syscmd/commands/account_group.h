/** What the owner file says to the account operations. */
#pragma once

/** The cloud owner's name, which the caller releases with free(): empty when the file has none,
 * null when the file cannot be read or is empty. */
char* GetSSOOwner();

/** The peer-to-peer owner's name, under the same terms. */
char* GetP2POwner();

/**
 * The group that an account is given.
 *
 * @param username  the account's name; compared whole with the owner's
 * @param isowner   set to 1 when the account is the cloud owner's, else to 0
 * @return "admin" for the owner, else SKYHOLD_GROUP; not to be released
 */
const char* getGroupByUsername(const char* username, int* isowner);
