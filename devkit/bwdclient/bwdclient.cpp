#include "common/mxl/bwdclient.h"

#include "devkit/bwdclient/frame.h"
#include "liblst/export.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace {

constexpr long DEFAULT_TIMEOUT_MS = 30000;
constexpr int RETRY_MS = 10;

long timeout_ms()
{
    const char* given = std::getenv("BOXWELLD_TIMEOUT_MS");
    char* end = nullptr;
    const long value = given == nullptr ? 0 : std::strtol(given, &end, 10);
    return value > 0 && *end == '\0' ? value : DEFAULT_TIMEOUT_MS;
}

/** Connects; while the daemon's queue is full (EAGAIN) it is asked again until the deadline. */
int connect_to_daemon(int fd, std::int64_t deadline)
{
    const char* path = std::getenv("BOXWELLD_SOCKET");
    sockaddr_un address;
    if (frame_address(path == nullptr ? BOXWELLD_DEFAULT_SOCKET : path, &address) != 0) {
        return -1;
    }
    while (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        if ((errno != EAGAIN && errno != EINTR) || frame_deadline(0) >= deadline) {
            return -1;
        }
        poll(nullptr, 0, RETRY_MS);
    }
    return 0;
}

int exchange(int fd, const char* request, std::uint32_t request_length, char** reply, int* length)
{
    const std::int64_t deadline = frame_deadline(timeout_ms());
    char* text = nullptr;
    std::uint32_t text_length = 0;
    if (connect_to_daemon(fd, deadline) != 0 ||
        frame_send(fd, request, request_length, deadline) != 0 ||
        frame_receive(fd, &text, &text_length, deadline) != 0) {
        return -1;
    }
    *reply = text;
    *length = static_cast<int>(text_length);
    return 0;
}

} // namespace

extern "C" EXPORTED int
process_request_bwdclient(char* request, int request_length, char** reply, int* reply_length)
{
    if (request == nullptr || request_length < 0 || reply == nullptr || reply_length == nullptr) {
        errno = EINVAL;
        return -1;
    }
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0) {
        return -1;
    }
    const int result =
        exchange(fd, request, static_cast<std::uint32_t>(request_length), reply, reply_length);
    close(fd);
    return result;
}
