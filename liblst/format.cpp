#include "liblst/format.h"

#include "liblst/export.h"
#include "liblst/failure.h"
#include "liblst/liblst.h"
#include "liblst/owned.h"

#include <cstdio>

char* formatText(const char* format, va_list arguments)
{
    if (format == nullptr) {
        return badArgument<char*>(nullptr);
    }
    va_list measured;
    va_copy(measured, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    if (length < 0) {
        return nullptr;
    }
    const std::size_t size = static_cast<std::size_t>(length) + 1;
    AUTO_FREE char* text = static_cast<char*>(std::malloc(size));
    if (text == nullptr || std::vsnprintf(text, size, format, arguments) < 0) {
        return nullptr;
    }
    return take(text);
}

EXPORTED char* String(const char* format, ...)
{
    char* text = nullptr;
    FORMAT_ARGUMENTS(text, format);
    return text;
}
