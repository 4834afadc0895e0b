/** The device's owner file: who owns it in the cloud, and what device it is. The one place that
 * knows its form, which docs/owner-file.md tells. */
#pragma once

#include <string>

#define OWNER_FILE "/opt/skyhold/etc/registration.conf"

/** The cloud owner's name, which the caller releases with free(): empty when the file has none,
 * null when the file cannot be read or is empty. */
char* GetSSOOwner();

/** The peer-to-peer owner's name, under the same terms. */
char* GetP2POwner();

/**
 * Writes the owner file: one line of XML without a line end, values as they are. The file is
 * emptied first, and deleted when the device information turns out incomplete.
 *
 * @param use_linkhub   whether to include the remote-access agent's id, where there is one
 * @param sso_username  the cloud owner's name
 * @param p2p_username  the peer-to-peer owner's name; null leaves the element out
 * @param path          the file, OWNER_FILE
 * @return 0; -1 when it cannot be opened; -3 when device information is missing (the file is gone);
 *         -4 when writing failed
 */
int createOwnerFile(
    bool use_linkhub, const char* sso_username, const char* p2p_username, const char* path
);

/** The same for a string. */
inline int createOwnerFile(
    bool use_linkhub, const std::string& sso_username, const char* p2p_username, const char* path
)
{
    return createOwnerFile(use_linkhub, sso_username.c_str(), p2p_username, path);
}
