#include "common/cut.h"

#include <cstring>

// By strstr(), for which the C library is quickest: several times as quick as memmem() on some
// processors.
std::string_view cut(const char* text, const char* begin, const char* end)
{
    const char* mark = strstr(text, begin);
    if (mark == nullptr) {
        return text + strlen(text);
    }
    const char* value = mark + strlen(begin);
    const char* stop = strstr(value, end);
    return stop != nullptr ? std::string_view(value, static_cast<std::size_t>(stop - value))
                           : value;
}
