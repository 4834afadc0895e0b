#include "liblst/characters.h"
#include "liblst/export.h"
#include "liblst/failure.h"
#include "liblst/liblst.h"

#include <algorithm>
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
    *std::remove_if(s, s + std::strlen(s), isLineEnd) = '\0';
    return 0;
}

EXPORTED int trimStr(char* s)
{
    if (s == nullptr) {
        return badArgument(-1);
    }
    const char* end = s + std::strlen(s);
    const char* begin = std::find_if_not(static_cast<const char*>(s), end, isBlank);
    while (end > begin && isBlank(end[-1])) {
        --end;
    }
    const std::size_t length = static_cast<std::size_t>(end - begin);
    std::memmove(s, begin, length);
    s[length] = '\0';
    return 0;
}

EXPORTED void delGaps(char* str)
{
    if (str == nullptr) {
        errno = EINVAL;
        return;
    }
    *std::remove_if(str, str + std::strlen(str), isBlank) = '\0';
}

EXPORTED char* Strdup(const char* str)
{
    return str != nullptr ? strdup(str) : nullptr;
}
