/** Registration of a remote-access user at the daemon. */
#pragma once

/**
 * Registers a remote-access user.
 *
 * @param username   the remote user's name
 * @param full_name  the full name, may be empty
 * @return 0 when the daemon carried it out or has that user already, else -1 (logged)
 */
int AddNetwork(const char* username, const char* full_name);
