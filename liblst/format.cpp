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
    // Where it fits, as most texts do, this formats once; a longer text is measured by it.
    char small[2048];
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(small, sizeof small, format, arguments);
    const std::size_t size = static_cast<std::size_t>(length) + 1;
    char* text = length < 0 ? nullptr : static_cast<char*>(std::malloc(size));
    if (text != nullptr && size <= sizeof small) {
        std::memcpy(text, small, size);
    } else if (text != nullptr) {
        std::vsnprintf(text, size, format, again);
    }
    va_end(again);
    return text;
}

EXPORTED char* String(const char* format, ...)
{
    char* text = nullptr;
    FORMAT_ARGUMENTS(text, format);
    return text;
}
