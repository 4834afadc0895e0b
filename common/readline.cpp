#include "common/readline.h"

#include "common/result.h"

#include <cstring>

int readline(char* buf, int bufsize, FILE* file)
{
    if (buf == nullptr || bufsize <= 0 || file == nullptr || fgets(buf, bufsize, file) == nullptr) {
        return -1;
    }

    for (char* end = buf; (end = strpbrk(end, "\r\n")) != nullptr; ++end) {
        *end = '\0';
    }
    return SUCCESS;
}
