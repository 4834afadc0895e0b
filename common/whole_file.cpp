#include "common/whole_file.h"

#include "common/result.h"
#include "liblst/format.h"
#include "liblst/owned.h"
#include "liblst/whole_file.h"

char* aGetFileContent(const int fn)
{
    return readToEnd(fn, OnReadError::Keep);
}

char* aGetFile(const char* format, ...)
{
    AUTO_FREE char* path = nullptr;
    FORMAT_ARGUMENTS(path, format);
    char* content = nullptr;
    return path != nullptr && readFile(&content, path, OnReadError::Keep) == SUCCESS ? content
                                                                                     : nullptr;
}
