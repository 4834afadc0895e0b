/** What a failed read or write means: to be tried again, or an error. */
#pragma once

#include <poll.h>

#include <cerrno>

/**
 * Tells after a call on `fd` failed whether it is to be tried again: after EINTR at once, after
 * EAGAIN as soon as the descriptor takes or gives data, for which this call sleeps.
 *
 * @param fd      the descriptor
 * @param events  POLLIN or POLLOUT
 * @param error   what errno was before the call; restored when it is to be tried again
 * @return false, with errno as the call left it, for any other error
 */
inline bool retryAfter(int fd, short events, int error)
{
    if (errno == EAGAIN) {
        pollfd waited = {.fd = fd, .events = events, .revents = 0};
        poll(&waited, 1, -1);
    } else if (errno != EINTR) {
        return false;
    }
    errno = error;
    return true;
}
