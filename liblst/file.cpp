#include "liblst/export.h"
#include "liblst/failure.h"
#include "liblst/format.h"
#include "liblst/liblst.h"
#include "liblst/owned.h"
#include "liblst/retry.h"
#include "liblst/whole_file.h"

#include <poll.h>

#include <cstring>

bool writeAll(int fd, const char* text, std::size_t length)
{
    const int error = errno;
    while (length > 0) {
        const ssize_t written = write(fd, text, length);
        if (written >= 0) {
            text += written;
            length -= static_cast<std::size_t>(written);
        } else if (!retryAfter(fd, POLLOUT, error)) {
            return false;
        }
    }
    return true;
}

EXPORTED char* ptGetFileContent(const int fn)
{
    return readToEnd(fn, OnReadError::Release);
}

EXPORTED int getFileContentFormat(char** content, const char* format, ...)
{
    if (content == nullptr || format == nullptr) {
        return badArgument(-1);
    }
    AUTO_FREE char* path = nullptr;
    FORMAT_ARGUMENTS(path, format);
    return path != nullptr ? readFile(content, path, OnReadError::Release) : -1;
}

EXPORTED int writeToFileFormat(const int fd, const char* format, ...)
{
    AUTO_FREE char* text = nullptr;
    FORMAT_ARGUMENTS(text, format);
    if (text == nullptr || !writeAll(fd, text, std::strlen(text))) {
        return -1;
    }
    return withoutInterruption([fd] { return fsync(fd); });
}
