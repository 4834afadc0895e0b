#include "liblst/characters.h"
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

EXPORTED int chopStr(char* s)
{
    if (s == nullptr) {
        return badArgument(-1);
    }
    removeEach(s, LineEnd());
    return 0;
}

EXPORTED int trimStr(char* s)
{
    if (s == nullptr) {
        return badArgument(-1);
    }
    const WhiteSpace isBlank;
    const char* begin = s;
    while (isBlank(*begin)) {
        ++begin;
    }
    std::size_t length = std::strlen(begin);
    while (length > 0 && isBlank(begin[length - 1])) {
        --length;
    }
    if (begin != s) {
        std::memmove(s, begin, length);
    }
    s[length] = '\0';
    return 0;
}

EXPORTED void delGaps(char* str)
{
    if (str == nullptr) {
        errno = EINVAL;
        return;
    }
    removeEach(str, WhiteSpace());
}

EXPORTED char* Strdup(const char* str)
{
    return str != nullptr ? strdup(str) : nullptr;
}
