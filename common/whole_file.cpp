#include "liblst/whole_file.h"

#include "common/common.h"
#include "liblst/format.h"
#include "liblst/owned.h"

#include <fcntl.h>
#include <unistd.h>

char* aGetFileContent(const int fn)
{
    return readToEnd(fn, OnReadError::Keep);
}

char* aGetFile(const char* format, ...)
{
    AUTO_FREE char* path = nullptr;
    FORMAT_ARGUMENTS(path, format);
    if (path == nullptr) {
        return nullptr;
    }

    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file == -1) {
        return nullptr;
    }
    AUTO_FREE char* content = aGetFileContent(file);
    if (close(file) != SUCCESS) {
        return nullptr;
    }
    return take(content);
}
