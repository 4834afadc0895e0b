#include "devkit/bwdclient/frame.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace {

std::int64_t now_ms()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

/** Waits until `fd` is ready for `events`, or has an error that the next call reports. */
int wait_for(int fd, short events, std::int64_t deadline)
{
    pollfd poller = {fd, events, 0};
    for (;;) {
        const std::int64_t left = std::min<std::int64_t>(deadline - now_ms(), INT_MAX);
        const int ready = left <= 0 ? 0 : poll(&poller, 1, static_cast<int>(left));
        if (ready > 0) {
            return 0;
        }
        if (ready == 0) {
            errno = ETIMEDOUT;
        }
        if (ready == 0 || errno != EINTR) {
            return -1;
        }
    }
}

/** After a transfer that failed: 0 when it is to be tried again. */
int recover(int fd, short events, std::int64_t deadline)
{
    if (errno == EINTR) {
        return 0;
    }
    return errno == EAGAIN ? wait_for(fd, events, deadline) : -1;
}

int send_all(int fd, const char* bytes, std::size_t length, std::int64_t deadline)
{
    while (length > 0) {
        const ssize_t sent = send(fd, bytes, length, MSG_NOSIGNAL);
        if (sent < 0) {
            if (recover(fd, POLLOUT, deadline) != 0) {
                return -1;
            }
            continue;
        }
        bytes += sent;
        length -= static_cast<std::size_t>(sent);
    }
    return 0;
}

int receive_all(int fd, char* bytes, std::size_t length, std::int64_t deadline)
{
    while (length > 0) {
        const ssize_t received = recv(fd, bytes, length, 0);
        if (received == 0) {
            errno = EPROTO;
            return -1;
        }
        if (received < 0) {
            if (recover(fd, POLLIN, deadline) != 0) {
                return -1;
            }
            continue;
        }
        bytes += received;
        length -= static_cast<std::size_t>(received);
    }
    return 0;
}

} // namespace

std::int64_t frame_deadline(std::int64_t timeout_ms)
{
    return now_ms() + timeout_ms;
}

int frame_address(const char* path, sockaddr_un* address)
{
    const std::size_t length = std::strlen(path);
    if (length >= sizeof address->sun_path) {
        errno = ENAMETOOLONG;
        return -1;
    }
    std::memset(address, 0, sizeof *address);
    address->sun_family = AF_UNIX;
    std::memcpy(address->sun_path, path, length);
    return 0;
}

std::uint32_t frame_length(const char* head)
{
    std::uint32_t length = 0;
    std::memcpy(&length, head, sizeof length);
    return ntohl(length);
}

void frame_write_length(std::uint32_t length, char* head)
{
    const std::uint32_t ordered = htonl(length);
    std::memcpy(head, &ordered, sizeof ordered);
}

int frame_send(int fd, const char* text, std::uint32_t length, std::int64_t deadline)
{
    if (text != nullptr && length > FRAME_MAX_BYTES) {
        errno = EPROTO;
        return -1;
    }
    char head[FRAME_HEAD_BYTES];
    frame_write_length(text == nullptr ? FRAME_NO_REPLY : length, head);
    if (send_all(fd, head, sizeof head, deadline) != 0) {
        return -1;
    }
    return text == nullptr ? 0 : send_all(fd, text, length, deadline);
}

int frame_receive(int fd, char** text, std::uint32_t* length, std::int64_t deadline)
{
    char head_bytes[FRAME_HEAD_BYTES];
    if (receive_all(fd, head_bytes, sizeof head_bytes, deadline) != 0) {
        return -1;
    }
    const std::uint32_t head = frame_length(head_bytes);
    if (head == FRAME_NO_REPLY) {
        *text = nullptr;
        *length = 0;
        return 0;
    }
    if (head > FRAME_MAX_BYTES) {
        errno = EPROTO;
        return -1;
    }
    auto* bytes = static_cast<char*>(std::malloc(std::size_t{head} + 1));
    if (bytes == nullptr) {
        return -1;
    }
    if (receive_all(fd, bytes, head, deadline) != 0) {
        std::free(bytes);
        return -1;
    }
    bytes[head] = '\0';
    *text = bytes;
    *length = head;
    return 0;
}
