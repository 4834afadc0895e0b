#include "liblst/whole_file.h"

#include "liblst/grow.h"
#include "liblst/owned.h"
#include "liblst/retry.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>

#include <algorithm>

namespace {

// How much is read at once where no size is known.
constexpr std::size_t CHUNK = 2048;
// A size that a file system reports costs at most this much memory before a byte has been read.
constexpr off_t LARGEST_HINT = off_t{64} << 20;

/** The size of a regular file, 0 when there is none to know. */
off_t sizeOf(int fd)
{
    struct stat status = {};
    return fstat(fd, &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : 0;
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
    const off_t size = sizeOf(fd);
    const std::size_t hint = static_cast<std::size_t>(std::min(size, LARGEST_HINT));
    // One byte for the NUL, one more so that the read of a whole file comes back short.
    std::size_t capacity = hint != 0 ? hint + 2 : CHUNK + 1;
    std::size_t length = 0;
    AUTO_FREE char* text = static_cast<char*>(std::malloc(capacity));
    if (text == nullptr) {
        return nullptr;
    }
    for (;;) {
        const std::size_t room = capacity - length - 1;
        const ssize_t got = readPatiently(fd, text + length, hint != 0 ? room : CHUNK);
        if (got < 0 && on_error == OnReadError::Release) {
            return nullptr;
        }
        if (got <= 0) {
            break;
        }
        length += static_cast<std::size_t>(got);
        if (static_cast<off_t>(length) == size && length < capacity - 1) {
            break; // a short read that ends where the regular file ends: no need to ask again
        }
        const std::size_t next = hint != 0 ? 1 : CHUNK;
        if (capacity - length <= next && !growArray(text, capacity, capacity + CHUNK)) {
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
    AUTO_CLOSE_FD int fd = openPatiently(path, O_RDONLY | O_CLOEXEC);
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
