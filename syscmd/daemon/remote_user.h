/** Remote-access users at the daemon: each stands for a cloud user who may reach the device. */
#pragma once

/**
 * Registers a remote-access user.
 *
 * @param username   the remote user's name
 * @param full_name  the full name, may be empty; a null one is printed as printf does
 * @return 0 when the daemon carried it out or has that user already, else -1 (logged)
 */
int AddNetwork(const char* username, const char* full_name);

/**
 * Deletes a remote-access user.
 *
 * @param username  the cloud user's name
 * @return 0 when the daemon answered, a refusal included; -1 when the exchange failed or `username`
 *         is null (logged)
 */
int DelNetwork(const char* username);
