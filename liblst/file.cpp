#include "liblst/export.h"
#include "liblst/failure.h"
#include "liblst/format.h"
#include "liblst/liblst.h"
#include "liblst/owned.h"
#include "liblst/whole_file.h"

#include <fcntl.h>

EXPORTED int getFileContentFormat(char** content, const char* format, ...)
{
    if (content == nullptr || format == nullptr) {
        return badArgument(-1);
    }
    AUTO_FREE char* path = nullptr;
    FORMAT_ARGUMENTS(path, format);
    if (path == nullptr) {
        return -1;
    }
    AUTO_CLOSE_FD int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return -1;
    }
    AUTO_FREE char* text = readToEnd(fd, OnReadError::Release);
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
