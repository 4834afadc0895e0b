/** Owned copies of texts, on top of liblst's ownership helpers. */
#pragma once

#include "common/result.h"
#include "liblst/owned.h"

#include <cstring>
#include <string_view>

/** Hands `*out` a newly allocated NUL-terminated copy of `text`; 0, or -1 when memory runs out. */
inline int giveCopy(char** out, std::string_view text)
{
    char* copy = strndup(text.data(), text.size());
    if (copy == nullptr) {
        return -1;
    }
    *out = copy;
    return SUCCESS;
}
