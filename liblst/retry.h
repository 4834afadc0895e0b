/** What a failed call means: to be made again, or an error. */
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <sys/types.h>

#include <cerrno>

inline bool isFailure(ssize_t result)
{
    return result == -1;
}
inline bool isFailure(const void* result)
{
    return result == nullptr;
}

/**
 * Makes a call, and again for as long as a signal interrupts it (EINTR), with errno as it was.
 *
 * @param call  returns -1 or null when it fails, with the reason in errno
 * @return the call's result
 */
template<typename Call> auto withoutInterruption(const Call& call)
{
    const int error = errno;
    for (;;) {
        const auto result = call();
        if (!isFailure(result) || errno != EINTR) {
            return result;
        }
        errno = error;
    }
}

/** open(), made again for as long as a signal interrupts it. */
inline int openPatiently(const char* path, int flags, mode_t mode = 0)
{
    return withoutInterruption([=] { return open(path, flags, mode); });
}

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
