/** Creation of an account at the daemon. */
#pragma once

/**
 * Creates a locked account in the cloud group.
 *
 * @param username       the account's name
 * @param password_hash  Base64 of SMB hash, colon, system hash; null gives the account a
 *                       placeholder pair that no password has
 * @param email          the e-mail address
 * @param resource_type  the record's resource type, "User"
 * @return 0 when the daemon carried it out, else -1 (logged)
 */
int AddUser(
    const char* username, const char* password_hash, const char* email, const char* resource_type
);
