#include "liblst/export.h"
#include "liblst/failure.h"
#include "liblst/liblst.h"

#include <cstring>

EXPORTED char* ptCutStr(const char* string, const char* begin, const char* end)
{
    if (string == nullptr || begin == nullptr || end == nullptr) {
        return badArgument<char*>(nullptr);
    }
    const char* mark = std::strstr(string, begin);
    if (mark == nullptr) {
        return strdup("");
    }
    const char* text = mark + std::strlen(begin);
    const char* stop = *end != '\0' ? std::strstr(text, end) : nullptr;
    return stop != nullptr ? strndup(text, static_cast<std::size_t>(stop - text)) : strdup(text);
}
