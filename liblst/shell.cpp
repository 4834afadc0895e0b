#include "liblst/export.h"
#include "liblst/failure.h"
#include "liblst/format.h"
#include "liblst/liblst.h"
#include "liblst/owned.h"
#include "liblst/whole_file.h"

EXPORTED int getShellContentFormat(char** content, const char* format, ...)
{
    if (content == nullptr) {
        return badArgument(-1);
    }
    AUTO_FREE char* command = nullptr;
    FORMAT_ARGUMENTS(command, format);
    if (command == nullptr) {
        return -1;
    }
    AUTO_CLOSE_PIPE FILE* pipe = popen(command, "r");
    if (pipe == nullptr) {
        return -1;
    }
    char* output = readToEnd(fileno(pipe), OnReadError::Release);
    if (output == nullptr) {
        return -1;
    }
    *content = output;
    return 0;
}

EXPORTED int executeShellFormat(const char* format, ...)
{
    AUTO_FREE char* command = nullptr;
    FORMAT_ARGUMENTS(command, format);
    return command != nullptr ? std::system(command) : -1;
}
