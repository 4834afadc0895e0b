#include "common/error_text.h"

#include <cstdio>
#include <cstring>

const char* errorText(ErrorText& buffer, int error)
{
    // The GNU function may answer with a text of its own and leave the buffer as it was.
    const char* text = strerror_r(error, buffer, sizeof buffer);
    if (text != buffer) {
        snprintf(buffer, sizeof buffer, "%s", text);
    }
    return buffer;
}
