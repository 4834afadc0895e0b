/**
 * Preloaded into the programs of a device under proot: proot translates the path of a socket that a
 * program connects to, but not one that it sends to without a connection, as the journal's send
 * call does. Untranslated, a device's log entries would go to the host's journal.
 *
 * The environment's DEVICE_TREE names the host's folder that holds the device's /run.
 */
#include "liblst/export.h"

#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#define IN_RUN "/run/"

/** Writes the host's name of a socket in the device's /run; returns whether it is one. */
static int translate(const struct msghdr* message, struct sockaddr_un* address)
{
    const char* tree = getenv("DEVICE_TREE");
    const struct sockaddr_un* own = message->msg_name;
    if (tree == NULL || own == NULL || message->msg_namelen > sizeof *own ||
        own->sun_family != AF_UNIX) {
        return 0;
    }
    char path[sizeof own->sun_path + 1] = "";
    memcpy(path, own->sun_path, message->msg_namelen - offsetof(struct sockaddr_un, sun_path));
    if (strncmp(path, IN_RUN, strlen(IN_RUN)) != 0) {
        return 0;
    }
    address->sun_family = AF_UNIX;
    const int length = snprintf(address->sun_path, sizeof address->sun_path, "%s%s", tree, path);
    return length > 0 && (size_t)length < sizeof address->sun_path;
}

EXPORTED ssize_t sendmsg(int socket, const struct msghdr* message, int flags)
{
    struct sockaddr_un address;
    struct msghdr translated = *message;
    if (translate(message, &address)) {
        translated.msg_name = &address;
        translated.msg_namelen = sizeof address;
    }
    return syscall(SYS_sendmsg, socket, &translated, flags);
}
