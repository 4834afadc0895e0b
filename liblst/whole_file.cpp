#include "liblst/whole_file.h"

#include "liblst/grow.h"
#include "liblst/owned.h"
#include "liblst/retry.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>

#include <algorithm>

namespace {

constexpr std::size_t FIRST_CHUNK = 2048;
// A size that a file system reports costs at most this much memory before a byte has been read.
constexpr std::size_t LARGEST_HINT = std::size_t{64} << 20;

/** The size of a regular file, 0 when there is none to know. */
std::size_t sizeOf(int fd)
{
    struct stat status = {};
    if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size <= 0) {
        return 0;
    }
    return static_cast<std::size_t>(
        std::min<decltype(status.st_size)>(status.st_size, std::size_t{LARGEST_HINT})
    );
}

/** read(), tried again after EINTR and EAGAIN. */
ssize_t readPatiently(int fd, char* to, std::size_t size)
{
    const int error = errno;
    for (;;) {
        const ssize_t got = read(fd, to, size);
        if (got >= 0 || !retryAfter(fd, POLLIN, error)) {
            return got;
        }
    }
}

} // namespace

char* readToEnd(int fd, OnReadError on_error)
{
    const std::size_t hint = sizeOf(fd);
    // One byte for the NUL, one more so that the read of a whole file comes back short.
    std::size_t capacity = (hint != 0 ? hint : FIRST_CHUNK) + 2;
    std::size_t length = 0;
    AUTO_FREE char* text = static_cast<char*>(std::malloc(capacity));
    if (text == nullptr) {
        return nullptr;
    }
    for (;;) {
        const ssize_t got = readPatiently(fd, text + length, capacity - length - 1);
        if (got < 0 && on_error == OnReadError::Release) {
            return nullptr;
        }
        if (got <= 0) {
            break;
        }
        length += static_cast<std::size_t>(got);
        if (length == hint && length < capacity - 1) {
            break; // a short read that ends where the regular file ends: no need to ask again
        }
        if (length == capacity - 1 && !growArray(text, capacity, FIRST_CHUNK)) {
            return nullptr; // GCOV_EXCL_LINE: no memory for a growing file
        }
    }
    if (length == 0) {
        return nullptr;
    }
    text[length] = '\0';
    if (length + 2 < capacity) {
        shrinkArray(text, length + 1);
    }
    return take(text);
}

int readFile(char** content, const char* path, OnReadError on_error)
{
    AUTO_CLOSE_FD int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return -1;
    }
    AUTO_FREE char* text = readToEnd(fd, on_error);
    if (text == nullptr) {
        return -1;
    }
    if (close(takeFd(fd)) != 0) {
        *content = nullptr;
        return -1;
    }
    give(content, text);
    return 0;
}
