#include "liblst/export.h"
#include "liblst/format.h"
#include "liblst/liblst.h"
#include "liblst/owned.h"

EXPORTED int executeShellFormat(const char* format, ...)
{
    AUTO_FREE char* command = nullptr;
    FORMAT_ARGUMENTS(command, format);
    return command != nullptr ? std::system(command) : -1;
}
